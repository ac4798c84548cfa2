#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/** What a person gets to see of a message. */
struct ReadMessage {
    /** UTF-8. */
    std::string text;
    /** The names of the attachments, in their order. */
    std::vector<std::string> attachments;
};

/** Parses one message, which it has in memory, as often as it is called. */
using Reader = std::function<ReadMessage()>;

/** Reads with the program's header events and parser, as the message window does. */
Reader ownReader(std::string_view message);

/** Reads with GMime. It leaves the attachments where they are, in the memory that the message lies in. */
Reader gmimeReader(std::string_view message);

} // namespace bench
