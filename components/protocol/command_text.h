#pragma once

#include <string>

namespace protocol {

/** A command's two texts, both without the line end. */
struct CommandText {
    std::string sent;
    /** What a person or a log may see of it: the same without a secret. */
    std::string shown;
};

} // namespace protocol
