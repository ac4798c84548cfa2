#pragma once

#include "addresses/directory_session.h"

#include <string>

namespace addresses {

/** Results of directories that the program does something about (RFC 4511 appendix A.2). */
namespace results {
inline constexpr int Success = 0;
inline constexpr int TimeLimitExceeded = 3;
inline constexpr int SizeLimitExceeded = 4;
inline constexpr int AdminLimitExceeded = 11;
inline constexpr int InvalidCredentials = 49;
} // namespace results

/** Whether the result means that only somebody who has logged on may do this. */
bool demandsLogOn(int code) noexcept;

/** Whether the server has broken a search off that would have found more. */
bool isLimit(int code) noexcept;

/**
 * The number that the end would have at a mail server, as docs/error-numbers.md lists them; 0 for a server
 * that has answered.
 */
int errorNumberOf(const DirectoryEnd& end) noexcept;

/**
 * What a member is told of the end of a search, in one or two sentences with what to do; empty for a search
 * that has come through. The number of errorNumberOf() or the server's result stands behind it.
 */
std::string troubleOf(const DirectoryEnd& end);

/** What is told of a log-on that the directory has refused. */
std::string troubleOfLogOn(const DirectoryEnd& end);

/** What is told of a server's name in the settings that is none. */
std::string troubleOfName();

} // namespace addresses
