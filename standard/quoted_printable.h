#pragma once

#include <functional>
#include <string_view>

namespace standard {

/**
 * Hands over the bytes of quoted-printable text (RFC 2045 section 6.7) in pieces. Blanks between the sign of
 * a soft line break and the line's end are the transport's. A sign with no two digits behind it stands for
 * itself, and one at the very end for a soft line break.
 */
void decodeQuotedPrintable(std::string_view text, const std::function<void(std::string_view)>& take);

} // namespace standard
