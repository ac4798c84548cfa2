#pragma once

#include <string>
#include <string_view>

namespace standard {

/**
 * A field's text with its encoded words (RFC 2047) decoded, as UTF-8. What is no encoded word is UTF-8 where
 * it is valid, otherwise Windows-1252.
 *
 * It also decodes what programs write and the RFC forbids: encoded words between quotes, with blanks in them,
 * longer than 75 bytes, next to other text, in B without its padding, and characters that are cut by the end
 * of a word. An encoded word that cannot be decoded stays as it stands.
 */
std::string decodedText(std::string_view text);

/** The same text with each run of its encoded words written as one, in UTF-8 and B. */
std::string withWordsOfUtf8(std::string_view text);

} // namespace standard
