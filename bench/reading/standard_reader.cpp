#include "bench/reading/readers.h"
#include "standard/reading.h"

#include <memory>
#include <string>

namespace bench {

Reader standardReader(std::string_view message) {
    constexpr std::string_view emptyLine = "\r\n\r\n";
    const std::size_t end = message.find(emptyLine);
    const auto header = std::make_shared<const std::string>(message.substr(0, end + 2));
    const auto body = std::make_shared<const std::string>(message.substr(end + emptyLine.size()));
    return [header, body] {
        StandardMessage read = standard::readStandardMessage(*header, *body);
        ReadMessage result{std::move(read.text), {}};
        for (StandardAttachment& attachment : read.attachments) {
            result.attachments.push_back(attachment.name + " " + std::to_string(attachment.bytes));
        }
        return result;
    };
}

} // namespace bench
