#pragma once

#include <string>

namespace protocol {

/** A command's two texts, both without the line end. */
struct CommandText {
    std::string sent;
    /** The command as a person or a log may see it: without its secret. */
    std::string shown;
};

} // namespace protocol
