#pragma once

#include <string>
#include <string_view>

namespace protocol {

/** What is shown in the place of a secret. */
inline constexpr std::string_view kHidden = "****";

/** A command's two texts, both without the line end. */
struct CommandText {
    std::string sent;
    /** The command as a person or a log may see it: its secret, with which it ends, is kHidden. */
    std::string shown;
};

} // namespace protocol
