#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace mailserver {

/** The text with every line ending in CR LF, whether it ended in LF or in CR LF before, the last one too. */
std::string withCrLf(std::string_view text);

/**
 * The message as an answer of many lines: a line that starts with a dot gets one more, behind a lone LF too,
 * and the last line is a dot alone (RFC 1939 section 3).
 */
std::string dotStuffed(std::string_view message);

/** The header, the empty line and the first `bodyLines` lines of the body (RFC 1939 section 7, TOP). */
std::string_view topOf(std::string_view message, std::size_t bodyLines);

/** A command line's first word in upper case and what stands behind the space. */
std::pair<std::string, std::string_view> splitCommand(std::string_view line);

/** The text in upper case; only the letters a to z change. */
std::string upperCase(std::string_view text);

} // namespace mailserver
