#include "standard/found_parts.h"

#include "standard/invitation.h"
#include "standard/part_text.h"
#include "standard/transfer_decoder.h"

#include <QMimeDatabase>

#include <algorithm>
#include <array>

namespace standard {

namespace {
/** Reports about messages (RFC 3464, 8098, 5965), which a person can read as they stand. */
bool isReport(std::string_view type) {
    constexpr std::array<std::string_view, 6> types = {
        "message/delivery-status",          "message/global-delivery-status",
        "message/disposition-notification", "message/global-disposition-notification",
        "message/feedback-report",          "message/tracking-status"};
    return std::find(types.begin(), types.end(), type) != types.end();
}

bool isSmime(std::string_view type) {
    return type == "application/pkcs7-mime" || type == "application/x-pkcs7-mime";
}

/** Whether an S/MIME part without a word about it holds signed data, as its first bytes tell (RFC 5652). */
bool beginsAsSigned(const Entity& part) {
    constexpr std::size_t looked = 400;
    constexpr std::string_view signedData("\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x07\x02", 11);
    const std::string start = decoded(part.content().substr(0, looked), part.encoding());
    return start.find(signedData) != std::string::npos;
}

/** Whether an S/MIME part without a word about it is named as one of certificates alone (RFC 8551
 * section 3.2.1). */
bool isNamedAsCertificates(const Entity& part) {
    return lowerCase(part.name()).ends_with(".p7c");
}

std::string_view smimeText(const Entity& part) {
    const std::string_view kind = part.typeField().textOf("smime-type");
    if (sameWord(kind, "certs-only") || (kind.empty() && isNamedAsCertificates(part))) {
        return "[This message holds certificates (S/MIME).]";
    }
    if (sameWord(kind, "signed-data") || (kind.empty() && beginsAsSigned(part))) {
        return "[This message is signed (S/MIME), and its text lies inside the signature.]";
    }
    if (sameWord(kind, "compressed-data")) {
        return "[This message is compressed (S/MIME).]";
    }
    return "[This message is encrypted (S/MIME).]";
}

/** What mail programs mean by types for which the database has something else, or nothing. */
constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kExtensions = {{
    {"message/rfc822", "eml"},
    {"message/global", "eml"},
    {"text/calendar", "ics"},
    {"application/ics", "ics"},
    {"text/vcard", "vcf"},
    {"text/x-vcard", "vcf"},
    {"application/octet-stream", "bin"},
    {"application/pkcs7-mime", "p7m"},
    {"application/x-pkcs7-mime", "p7m"},
    {"application/x-pkcs7-signature", "p7s"},
}};

/** The name of a part that has none: "attachment", with the extension of its type where it has one. */
std::string nameByType(std::string_view type) {
    const auto* const own = std::find_if(kExtensions.begin(), kExtensions.end(),
                                         [type](const auto& entry) { return entry.first == type; });
    if (own != kExtensions.end()) {
        return "attachment." + std::string(own->second);
    }
    const QMimeType known = QMimeDatabase().mimeTypeForName(
        QString::fromLatin1(type.data(), static_cast<qsizetype>(std::min<std::size_t>(type.size(), 200))));
    const std::string extension = known.preferredSuffix().toStdString();
    return extension.empty() ? "attachment" : "attachment." + extension;
}
} // namespace

void FoundParts::addText(std::string text) {
    if (trimmed(text).empty()) {
        return;
    }
    if (text_.empty()) {
        // Most messages have one text, which may be long.
        text_ = std::move(text);
        return;
    }
    text_ += text_.ends_with("\r\n") ? "\r\n" : "\r\n\r\n";
    text_ += text;
}

void FoundParts::take(const Part& part, Wanted wanted) {
    const Entity& entity = part.entity;
    if (!part.parts.empty()) {
        takeMultipart(part, wanted);
    } else if (entity.type() == "text/calendar" || entity.type() == "application/ics") {
        takeInvitation(entity);
    } else if (entity.isOfKind("text")) {
        takeText(entity, wanted);
    } else if (entity.isOfKind("multipart")) {
        // Without a boundary anywhere it is one text, unless it was too deep to be looked at.
        if (wanted == Wanted::TextAndAttachments) {
            addText(textOfPart(entity));
        }
    } else {
        if (isSmime(entity.type())) {
            addText(std::string(smimeText(entity)));
        } else if (isReport(entity.type())) {
            addText(textOfPart(entity));
        }
        attach(entity);
    }
}

void FoundParts::takeMultipart(const Part& part, Wanted wanted) {
    const std::string& type = part.entity.type();
    if (type == "multipart/alternative") {
        takeAlternatives(part, wanted);
    } else if (type == "multipart/related") {
        takeRelated(part, wanted);
    } else if (type == "multipart/encrypted") {
        takeEncrypted(part);
    } else {
        for (const Part& inner : part.parts) {
            take(inner, wanted);
        }
    }
}

/** Plain text comes before HTML, although its sender puts it first (RFC 2046 section 5.1.4). */
void FoundParts::takeAlternatives(const Part& part, Wanted wanted) {
    const Part* best = &part.parts.front();
    for (const Part& inner : part.parts) {
        best = inner.readable > best->readable ? &inner : best;
    }
    for (const Part& inner : part.parts) {
        take(inner, &inner == best ? wanted : Wanted::Attachments);
    }
}

/** RFC 2387: the root is read, and the others are what it refers to. */
void FoundParts::takeRelated(const Part& part, Wanted wanted) {
    std::string start(part.entity.typeField().textOf("start"));
    std::erase_if(start, [](char letter) { return letter == '<' || letter == '>' || letter == ' '; });
    const auto found = std::find_if(part.parts.begin(), part.parts.end(), [&start](const Part& inner) {
        return !start.empty() && inner.entity.contentId() == start;
    });
    const Part& root = found == part.parts.end() ? part.parts.front() : *found;
    for (const Part& inner : part.parts) {
        const bool isReferredTo =
            &inner != &root && (inner.entity.type() == "text/html" || inner.entity.type() == "text/css");
        if (isReferredTo) {
            attach(inner.entity);
        } else {
            take(inner, wanted);
        }
    }
}

void FoundParts::takeEncrypted(const Part& part) {
    const std::string_view protocol = part.entity.typeField().textOf("protocol");
    addText(sameWord(protocol, "application/pgp-encrypted") ? "[This message is encrypted (PGP).]"
                                                            : "[This message is encrypted.]");
    for (const Part& inner : part.parts) {
        attach(inner.entity);
    }
}

void FoundParts::takeText(const Entity& part, Wanted wanted) {
    const bool isShown = wanted == Wanted::TextAndAttachments && !part.isAttached();
    if (isShown) {
        addText(textOfPart(part));
    }
    if (part.isAttached() || (isShown && !part.name().empty())) {
        attach(part);
    }
}

void FoundParts::takeInvitation(const Entity& part) {
    const std::string invitation = invitationText(decodedTextOfPart(part));
    if (std::find(invitations_.begin(), invitations_.end(), invitation) == invitations_.end()) {
        addText(invitation);
        invitations_.push_back(invitation);
    }
    attach(part);
}

void FoundParts::attach(const Entity& part) {
    std::string name = part.name();
    if (name.empty()) {
        name = nameByType(part.type());
    }
    attachments_.push_back(
        {std::move(name), decodedSize(part.content(), part.encoding()), part.content(), part.encoding()});
}

} // namespace standard
