#pragma once

#include <string>
#include <string_view>

namespace standard {

/**
 * Rejoins the lines of format=flowed text (RFC 3676): a line that ends with a blank goes on with the next one
 * of the same quotation. Lines of "-- ", which part signatures, stay alone.
 * \param text Lines with CR LF, and so is the result.
 * \param deleteBlanks DelSp=yes: the blank that marks a flowed line is not part of the text.
 */
std::string rejoined(std::string_view text, bool deleteBlanks);

} // namespace standard
