#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sasl {

/**
 * The bytes in base64 (RFC 4648 section 4), without line ends; empty for no bytes, which an initial response
 * writes as "=".
 */
std::string toBase64(std::string_view bytes);

/**
 * The bytes that the text stands for. Returns nothing unless it is the one base64 text for these bytes:
 * foreign characters, missing padding and left-over bits are errors here, unlike in mail.
 */
std::optional<std::string> fromBase64(std::string_view text);

} // namespace sasl
