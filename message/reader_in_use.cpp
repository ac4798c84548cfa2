#include "message/reader_in_use.h"

#include "message/house_reader.h"

namespace {
MessageReader& readerInUse() {
    static MessageReader reader = readHouseMessage;
    return reader;
}
} // namespace

ReadMessage readMessage(const email::MessageSummary& message) {
    return readerInUse()(message);
}

void useReader(MessageReader reader) {
    readerInUse() = reader;
}
