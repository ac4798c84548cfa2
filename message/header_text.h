#pragma once

#include <QString>

#include <string>
#include <string_view>
#include <vector>

/**
 * Text for a header field in ASCII: as it stands where every reader takes it for itself, otherwise as encoded
 * words with single spaces between them (RFC 2047). A word holds whole characters; letters and their
 * combining marks are parted only where more than a word full of them belong together. Halves of surrogate
 * pairs become U+FFFD.
 */
std::string headerText(const QString& text);

/**
 * A parameter of a MIME field whose value may be beyond ASCII, as units for a field that is folded: each
 * begins with a space, and every one but the last ends in a semicolon. The name gets an asterisk, and a long
 * value is cut between characters into numbered sections (RFC 2231 sections 3 and 4).
 */
std::vector<std::string> extendedParameter(std::string_view name, const QString& value);
