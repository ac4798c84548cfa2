#include "message/house_reader.h"

#include "message/mime_parser.h"

#include <cstdint>

ReadMessage readHouseMessage(const email::MessageSummary& message) {
    constexpr std::int32_t largestPlainMessage = 32'000; // bytes
    if (!message.Boundary.empty()) {
        return readMultipart(message.BodyText, message.Boundary);
    }
    ReadMessage read;
    if (message.Size <= largestPlainMessage) {
        read.text = message.BodyText;
    }
    return read;
}
