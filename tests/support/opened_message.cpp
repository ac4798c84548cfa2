#include "tests/support/opened_message.h"

#include "components/netcodelib/part_decoder.h"
#include "components/poplib/pop3_session.h"
#include "email/header_events.h"
#include "message/house_reader.h"
#include "message/part_headers.h"
#include "platform/runtime_error.h"
#include "tests/support/pieces.h"

#include <algorithm>

namespace support {

namespace {
constexpr std::size_t kAtOnce = std::string_view::npos;

/** What a server sends for the message: its lines with every leading dot doubled, and the closing dot. */
std::string answerWith(std::string_view message) {
    std::string answer = "+OK\r\n";
    while (!message.empty()) {
        const std::size_t end = std::min(message.find("\r\n"), message.size());
        const std::string_view line = message.substr(0, end);
        answer.append(line.starts_with('.') ? "." : "").append(line).append("\r\n");
        message.remove_prefix(std::min(end + 2, message.size()));
    }
    return answer + ".\r\n";
}

/** Fills the summary as an opening does, event by event. */
void receive(std::string_view message, std::size_t pieceBytes, email::MessageSummary& summary) {
    poplib::Pop3Session session;
    email::HeaderEvents headers;
    const auto takeEvents = [&] {
        while (const auto event = session.nextEvent()) {
            if (const auto* header = std::get_if<poplib::HeaderLine>(&*event)) {
                headers.add(summary, header->field, header->value);
            } else if (const auto* body = std::get_if<poplib::BodyLine>(&*event)) {
                summary.BodyText.append(body->text).append("\r\n");
            }
        }
    };
    session.submit(poplib::retrCommand(1));
    session.receive("+OK ready\r\n");
    takeEvents();
    session.takeOutput();
    forEachPiece(answerWith(message), pieceBytes, [&](std::string_view piece) {
        session.receive(piece);
        takeEvents();
    });
}

OpenedMessage openedEncoded(std::string_view message, std::size_t pieceBytes) {
    OpenedMessage result;
    email::MessageSummary& summary = result.summary;
    summary.Subject = "'";
    summary.Date = "':";
    result.error = platform::errorNumberOf([&] { receive(message, pieceBytes, summary); });
    if (result.error != 0 || summary.Boundary.empty()) {
        return result;
    }
    ReadMessage read = readHouseMessage(summary);
    for (const FoundAttachment& found : read.attachments) {
        summary.AttachmentName = found.name;
        result.attachments.push_back({found.name, std::string(withoutPartHeaders(found.part)), {}, 0});
    }
    result.text = read.text.value_or(std::string());
    result.error = read.error;
    return result;
}
} // namespace

DecodedAttachment decoded(DecodedAttachment attachment, std::size_t pieceBytes) {
    netcodelib::PartDecoder decoder;
    std::string content;
    attachment.error = platform::errorNumberOf([&] {
        forEachPiece(attachment.encoded + "\r\n", pieceBytes,
                     [&](std::string_view piece) { decoder.append(piece, content); });
        decoder.finish(content);
    });
    attachment.content = attachment.error == 0 ? content : std::string();
    return attachment;
}

OpenedMessage opened(std::string_view message, std::size_t pieceBytes) {
    OpenedMessage result = openedEncoded(message, pieceBytes);
    for (DecodedAttachment& attachment : result.attachments) {
        attachment = decoded(std::move(attachment), pieceBytes);
    }
    return result;
}

OpenedMessage openedWithoutDecoding(std::string_view message) {
    return openedEncoded(message, kAtOnce);
}

std::string differenceBetween(const OpenedMessage& left, const OpenedMessage& right) {
    struct Field {
        const char* name;
        std::string email::MessageSummary::*text;
    };

    using email::MessageSummary;
    for (const auto& [name, text] : {Field{"From", &MessageSummary::From},
                                     {"Subject", &MessageSummary::Subject},
                                     {"Date", &MessageSummary::Date},
                                     {"HeaderText", &MessageSummary::HeaderText},
                                     {"BodyText", &MessageSummary::BodyText},
                                     {"ContentType", &MessageSummary::ContentType},
                                     {"Boundary", &MessageSummary::Boundary},
                                     {"AttachmentName", &MessageSummary::AttachmentName}}) {
        if (left.summary.*text != right.summary.*text) {
            return name;
        }
    }
    if (left.error != right.error) {
        return "error " + std::to_string(left.error) + " and " + std::to_string(right.error);
    }
    if (left.text != right.text) {
        return "text";
    }
    if (left.attachments.size() != right.attachments.size()) {
        return "number of attachments";
    }
    for (std::size_t index = 0; index < left.attachments.size(); ++index) {
        if (left.attachments[index] != right.attachments[index]) {
            return "attachment " + std::to_string(index + 1);
        }
    }
    return {};
}

} // namespace support
