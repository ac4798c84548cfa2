// Reads whole messages as the standards have it: the list's fields, the text, the attachments.
//
// Input: a raw message.

#include "standard/reading.h"
#include "standard/transfer_decoder.h"
#include "tests/fuzz/fuzz_input.h"

#include <QString>

#include <string>
#include <string_view>

namespace {
/** Whether the text is UTF-8, so that all of the program may take it for text. */
bool isUtf8(const std::string& text) {
    return QString::fromStdString(text).toStdString() == text;
}

/** A header and a body, as the server's lines give them. */
struct Mail {
    std::string header;
    std::string body;
};

Mail mailOf(std::string_view message) {
    Mail mail;
    bool inBody = false;
    while (!message.empty()) {
        const std::size_t end = message.find('\n');
        std::string_view line = message.substr(0, end);
        message.remove_prefix(end == std::string_view::npos ? message.size() : end + 1);
        line = line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
        if (!inBody && line.empty()) {
            inBody = true;
        } else {
            (inBody ? mail.body : mail.header).append(line).append("\r\n");
        }
    }
    return mail;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Mail mail = mailOf(fuzz::Input(data, size).rest());
    const StandardMessage message = standard::readStandardMessage(mail.header, mail.body);
    constexpr std::size_t aFewBytes = 20'000;
    fuzz::require(message.text.size() < 4 * size + aFewBytes, "the text is in proportion to the message");
    for (const std::string* text : {&message.text, &message.fields.from, &message.fields.subject,
                                    &message.fields.date, &message.answerTo}) {
        fuzz::require(isUtf8(*text), "all text is UTF-8");
    }
    for (std::size_t at = message.text.find_first_of("\r\n"); at != std::string::npos;
         at = message.text.find_first_of("\r\n", at + 2)) {
        fuzz::require(message.text.compare(at, 2, "\r\n") == 0, "lines end with CR LF");
    }
    for (const StandardAttachment& attachment : message.attachments) {
        fuzz::require(!attachment.name.empty() && isUtf8(attachment.name), "attachments have names");
        std::int64_t bytes = 0;
        standard::decode(attachment.content, attachment.encoding, [&bytes](std::string_view piece) {
            bytes += static_cast<std::int64_t>(piece.size());
        });
        fuzz::require(bytes == attachment.bytes, "the size is the number of decoded bytes");
    }
    for (const std::string& id : message.references) {
        fuzz::require(id.find_first_of("\r\n \t") == std::string::npos, "no message id breaks a line");
    }
    return 0;
}
