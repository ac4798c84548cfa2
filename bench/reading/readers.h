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
    /** The names of the attachments, in their order, perhaps each with its number of bytes behind a blank. */
    std::vector<std::string> attachments;
};

/** Parses one message, which it has in memory, as often as it is called. */
using Reader = std::function<ReadMessage()>;

/** Reads with the program's header events and parser, as the message window does. */
Reader ownReader(std::string_view message);

/** What a reader tells of an attachment. */
enum class Told { Name, NameAndBytes };

/**
 * Reads with GMime. It leaves the attachments where they are, in the memory that the message lies in, and
 * decodes them only to count their bytes.
 */
Reader gmimeReader(std::string_view message, Told told = Told::Name);

/** Reads as the message window does in the standard way, and tells the attachments' bytes too. */
Reader standardReader(std::string_view message);

} // namespace bench
