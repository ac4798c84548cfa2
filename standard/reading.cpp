#include "standard/reading.h"

#include "standard/charset_decoder.h"
#include "standard/date_text.h"
#include "standard/encoded_words.h"
#include "standard/found_parts.h"
#include "standard/mailboxes.h"

#include <memory>
#include <utility>

namespace standard {

namespace {
std::string valueOf(const HeaderFields& header, std::string_view name) {
    return header.first(name).value_or(std::string());
}

/** RFC 5322 section 3.6.4. */
std::vector<std::string> referencesOf(const HeaderFields& header, const std::string& messageId) {
    std::vector<std::string> ids = messageIdsOf(valueOf(header, "References"));
    if (ids.empty()) {
        ids = messageIdsOf(valueOf(header, "In-Reply-To"));
        if (ids.size() != 1) {
            ids.clear();
        }
    }
    if (!messageId.empty()) {
        ids.push_back(messageId);
    }
    return ids;
}

std::string answerTo(const HeaderFields& header) {
    for (const std::string_view name : {"Reply-To", "From"}) {
        std::string mailboxes = mailboxesText(valueOf(header, name));
        if (!mailboxes.empty()) {
            return mailboxes;
        }
    }
    return decodedText(valueOf(header, "From"));
}
} // namespace

ListedFields listedFields(const ListedFields& fields) {
    const auto moment = momentOf(unfolded(fields.date));
    return {decodedText(unfolded(fields.from)), decodedText(unfolded(fields.subject)),
            moment ? localText(*moment) : toUtf8(unfolded(fields.date))};
}

StandardMessage readStandardMessage(std::string_view header, std::string_view body) {
    StandardMessage message;
    const HeaderFields fields(header, OddLines::Skipped);
    message.fields =
        listedFields({valueOf(fields, "From"), valueOf(fields, "Subject"), valueOf(fields, "Date")});
    message.answerTo = answerTo(fields);
    const std::vector<std::string> ids = messageIdsOf(valueOf(fields, "Message-ID"));
    message.messageId = ids.empty() ? std::string() : ids.front();
    message.references = referencesOf(fields, message.messageId);
    if (fields.bodyAt() < header.size() && !trimmed(header.substr(fields.bodyAt())).empty()) {
        message.joinedBody = std::make_shared<const std::string>(
            std::string(header.substr(fields.bodyAt())).append(body.empty() ? "" : "\r\n").append(body));
        body = *message.joinedBody;
    }
    FoundParts found;
    found.take(partTree(Entity(fields, body)));
    message.text = found.takeText();
    message.attachments = found.takeAttachments();
    return message;
}

} // namespace standard
