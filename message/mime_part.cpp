#include "message/mime_part.h"

#include "components/smtplib/folded_field.h"
#include "message/header_text.h"
#include "platform/private_file.h"
#include "platform/text.h"

#include <QMimeDatabase>
#include <QRandomGenerator>
#include <QStringDecoder>

#include <algorithm>
#include <vector>

namespace {
constexpr std::string_view kUnknownType = "application/octet-stream";

/** The name without what a reader could take for a line end or obey. */
QString visibleName(QString name) {
    for (QChar& character : name) {
        character = platform::isControlCharacter(character) ? QChar(u'_') : character;
    }
    return name;
}

std::string transferEncoding(TransferForm form) {
    return "Content-Transfer-Encoding: " + std::string(nameOf(form)) + "\r\n";
}

bool isTypeCharacter(char character) {
    constexpr std::string_view signs = "!#$&-^_.+";
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || signs.find(character) != std::string_view::npos;
}

/** Letters, digits and what else types are made of, with one slash between. */
bool isMimeType(std::string_view type) {
    const std::size_t slash = type.find('/');
    if (slash == 0 || slash == std::string_view::npos || slash + 1 == type.size()) {
        return false;
    }
    const std::string_view subtype = type.substr(slash + 1);
    return std::all_of(type.begin(), type.begin() + static_cast<std::ptrdiff_t>(slash), isTypeCharacter) &&
           std::all_of(subtype.begin(), subtype.end(), isTypeCharacter);
}

/** The charset of a text file; empty when it is neither ASCII nor UTF-8. */
std::string charsetOfFile(const QString& nativePath) {
    constexpr std::size_t pieceBytes = 64U << 10U;
    platform::RegularInput file(nativePath);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    std::string buffer(pieceBytes, '\0');
    std::string cut;
    bool ascii = true;
    for (std::string_view piece = file.read(buffer); !piece.empty(); piece = file.read(buffer)) {
        const std::string text = cut + std::string(piece);
        const bool isLast = file.bytesRead() == file.size();
        const std::size_t whole = isLast ? text.size() : platform::wholeCharacters(text, text.size() - 1);
        ascii = ascii && !traitsOf(text).eightBit;
        const QString decoded = decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(whole)));
        if (decoder.hasError() || decoded.contains(QChar::Null)) {
            return {};
        }
        cut = text.substr(whole);
    }
    return ascii ? "us-ascii" : "utf-8";
}

std::string drawBoundary() {
    // "=_" stands neither in base64 nor in quoted-printable.
    QString boundary = QStringLiteral("=_");
    for (int part = 0; part < 2; ++part) {
        boundary +=
            QStringLiteral("%1").arg(QRandomGenerator::system()->generate64(), 16, 16, QLatin1Char('0'));
    }
    return boundary.toStdString();
}
} // namespace

std::string textPartHeader(const OutgoingText& text) {
    return "Content-Type: text/plain; charset=" + std::string(text.charset) + "\r\n" +
           transferEncoding(text.form);
}

std::string plainFileName(const QString& name) {
    std::string plain;
    // A letter and its mark are one character each in this form, so the mark can be left out.
    for (const uint code : visibleName(name).normalized(QString::NormalizationForm_D).toUcs4()) {
        const bool isAscii = code < 0x80;
        if (isAscii && code != u'"' && code != u'\\') {
            plain += static_cast<char>(code);
        } else if (!QChar::isMark(code)) {
            plain += '_';
        }
    }
    // A line of 76 characters takes the parameter.
    constexpr std::size_t mostCharacters = 60;
    constexpr std::size_t mostOfExtension = 12;
    if (plain.size() > mostCharacters) {
        const std::size_t dot = plain.rfind('.');
        const std::string extension =
            dot != std::string::npos && plain.size() - dot <= mostOfExtension ? plain.substr(dot) : "";
        plain = plain.substr(0, mostCharacters - extension.size()) + extension;
    }
    return plain;
}

std::string filePartHeader(std::string_view type, TransferForm form, const QString& name,
                           std::string_view charset) {
    smtplib::FoldedField contentType("Content-Type:");
    contentType.add(' ' + std::string(type) + ';');
    if (!charset.empty()) {
        contentType.add(" charset=" + std::string(charset) + ';');
    }
    contentType.add(" name=\"" + plainFileName(name) + '"');
    smtplib::FoldedField disposition("Content-Disposition:");
    disposition.add(" attachment;");
    for (const std::string& unit : extendedParameter("filename", visibleName(name))) {
        disposition.add(unit);
    }
    return contentType.lines() + transferEncoding(form) + disposition.lines();
}

std::string newBoundary(std::initializer_list<std::string_view> texts) {
    return newBoundary(texts, drawBoundary);
}

std::string newBoundary(std::initializer_list<std::string_view> texts,
                        const std::function<std::string()>& draw) {
    for (;;) {
        std::string boundary = draw();
        const bool isNew = std::none_of(texts.begin(), texts.end(), [&boundary](std::string_view text) {
            return platform::inStr(1, text, boundary) > 0;
        });
        if (isNew) {
            return boundary;
        }
    }
}

std::string multipartHeader(std::string_view boundary, bool eightBit) {
    return "Content-Type: multipart/mixed; boundary=\"" + std::string(boundary) + "\"\r\n" +
           (eightBit ? transferEncoding(TransferForm::EightBit) : "");
}

FileType fileTypeOf(const QString& nativePath) {
    const std::string type = QMimeDatabase().mimeTypeForFile(nativePath).name().toStdString();
    // The types of messages must not be in base64 (RFC 2046 section 5.2.1), and some names mean no content.
    const bool usable = isMimeType(type) && !type.starts_with("message/") &&
                        !type.starts_with("multipart/") && !type.starts_with("inode/") &&
                        type != "application/x-zerosize";
    if (!usable) {
        return {std::string(kUnknownType), {}};
    }
    return {type, type.starts_with("text/") ? charsetOfFile(nativePath) : std::string()};
}
