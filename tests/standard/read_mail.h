#pragma once

#include "message/standard_reader.h"

#include <string>
#include <string_view>
#include <vector>

namespace support {

/** A message that was read, and the bytes that its attachments refer to. */
struct ReadMail {
    std::string header;
    std::string body;
    StandardMessage message;

    /** The names of the attachments, each with its number of bytes, as `a.txt (3 bytes)`. */
    std::vector<std::string> attachments() const;

    /** The decoded bytes of an attachment. */
    std::string bytesOf(std::size_t index) const;
};

/** Reads a message by the program's library, as it comes from a server; lines may end with LF alone. */
ReadMail readMail(std::string_view message);

} // namespace support
