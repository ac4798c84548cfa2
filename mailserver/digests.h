#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace mailserver {

enum class Digest { Md5, Sha1, Sha256 };

/** All of these return bytes. \throws std::runtime_error when OpenSSL refuses the digest. */
std::string digestOf(Digest digest, std::string_view bytes);
std::string hmacOf(Digest digest, std::string_view key, std::string_view bytes);

/** PBKDF2 with HMAC (RFC 8018 section 5.2), as long as the digest is. \throws std::runtime_error as above. */
std::string stretched(Digest digest, std::string_view password, std::string_view salt, unsigned iterations);

/** So many bytes that nobody can foretell, in base64. */
std::string randomToken(std::size_t bytes);

std::string lowerHex(std::string_view bytes);

std::string toBase64(std::string_view bytes);

/** Nothing when the text is not base64 with all of its padding (RFC 4648 section 4). */
std::optional<std::string> fromBase64(std::string_view text);

} // namespace mailserver
