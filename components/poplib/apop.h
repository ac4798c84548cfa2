#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace poplib {

/**
 * The timestamp of a greeting, with its angle brackets; nothing when the greeting has none, which means that
 * the server does not offer APOP. Only a message-id of RFC 5322 section 3.6.4 counts: a server that could
 * choose any bytes could learn the password from a few digests.
 */
std::optional<std::string_view> apopTimestamp(std::string_view greetingText);

/** The digest of APOP (RFC 1939 section 7), in lower-case hexadecimal. */
std::string apopDigest(std::string_view timestamp, std::string_view password);

} // namespace poplib
