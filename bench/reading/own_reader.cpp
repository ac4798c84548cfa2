#include "bench/reading/readers.h"
#include "email/header_events.h"
#include "email/messages.h"
#include "message/house_reader.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace bench {

namespace {
void addHeaderLine(email::HeaderEvents& events, email::MessageSummary& summary, std::string_view line) {
    if (line.starts_with(' ') || line.starts_with('\t')) {
        events.add(summary, {}, line);
        return;
    }
    const std::size_t colon = std::min(line.find(':'), line.size());
    const std::size_t value = line.substr(std::min(colon + 1, line.size())).starts_with(' ') ? 2 : 1;
    events.add(summary, line.substr(0, colon), line.substr(std::min(colon + value, line.size())));
}

/** Fills the summary with the header, line by line as the server sends it, and returns the body. */
std::string_view takeHeader(std::string_view message, email::MessageSummary& summary) {
    email::HeaderEvents events;
    while (!message.empty()) {
        const std::size_t end = std::min(message.find("\r\n"), message.size());
        const std::string_view line = message.substr(0, end);
        message.remove_prefix(std::min(end + 2, message.size()));
        if (line.empty()) {
            break;
        }
        addHeaderLine(events, summary, line);
    }
    return message;
}

ReadMessage read(std::string_view message) {
    ReadMessage result;
    email::MessageSummary summary;
    const std::string_view body = takeHeader(message, summary);
    summary.BodyText = body;
    const ::ReadMessage read = readHouseMessage(summary);
    for (const FoundAttachment& attachment : read.attachments) {
        result.attachments.push_back(attachment.name);
    }
    result.text = platform::toBytes(platform::fromBytes(read.text.value_or(std::string())));
    return result;
}
} // namespace

Reader ownReader(std::string_view message) {
    return [bytes = std::string(message)] { return read(bytes); };
}

} // namespace bench
