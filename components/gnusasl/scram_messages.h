#pragma once

#include "components/sasl/mechanism.h"

#include <optional>
#include <string_view>
#include <variant>

namespace gnusasl {

/** The client's nonce in the message that it begins with (RFC 5802 section 7, client-first-message). */
std::string_view nonceIn(std::string_view clientFirst);

/**
 * What is wrong with the server's first message; nothing when it has the form of RFC 5802 section 7, a nonce
 * that begins with the client's, and no more iterations than the limit. Whether the salt is base64 is left to
 * the library.
 */
std::optional<sasl::Fault> faultInServerFirst(std::string_view message, std::string_view clientNonce,
                                              const sasl::Limits& limits);

/** The part of the server's last message that has its signature, "v=...", or why there is none. */
std::variant<std::string_view, sasl::Fault> signatureIn(std::string_view serverFinal);

} // namespace gnusasl
