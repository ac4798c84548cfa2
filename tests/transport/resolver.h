#pragma once

namespace support {

/**
 * Names that the test program resolves by itself, without any network, because its own getaddrinfo() replaces
 * the system's:
 */

/** Two addresses, as a server with both protocols has them: first ::1, then 127.0.0.1. */
inline constexpr const char* kNameWithTwoAddresses = "both.test";
/** The name server says that there is no such name. */
inline constexpr const char* kUnknownName = "unknown.test";
/** No name server can be asked. */
inline constexpr const char* kUnansweredName = "unanswered.test";
/** Every name that ends so is this computer: 127.0.0.1. */
inline constexpr const char* kDomainHere = ".here.test";

} // namespace support
