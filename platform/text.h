#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/** Mail bytes as a person reads them: UTF-8 where the bytes are valid UTF-8, otherwise Windows-1252. */
QString fromBytes(std::string_view bytes);

/**
 * The number of bytes, `most` or a few less, after which the text can be cut without cutting a UTF-8
 * character in two; the whole text when it has no more than `most`. Bytes that are not UTF-8 are cut
 * anywhere.
 */
std::size_t wholeCharacters(std::string_view text, std::size_t most) noexcept;

/**
 * The same as fromBytes() for up to `most` bytes. Of a longer text it gives the start, with a mark behind it
 * that there is more. For places that show one line: a sender may put megabytes where a name is expected.
 */
QString startFromBytes(std::string_view bytes, std::size_t most);

/** Typed text as the bytes that go out: UTF-8. */
std::string toBytes(const QString& text);

/** The text with U+FFFD for each half of a surrogate pair that stands without the other, as clipboards have
 * it. */
QString withoutHalfPairs(const QString& text);

/** The 1-based position of the wanted text at or after `start` (1-based), 0 when there is none. */
std::size_t inStr(std::size_t start, std::string_view text, std::string_view wanted) noexcept;

/**
 * The `length` characters of the text from the 1-based `start` on, fewer where the text ends before.
 * \throws RuntimeError 5 when the start is not at least 1 or the length is negative.
 */
std::string_view mid(std::string_view text, std::int64_t start, std::int64_t length);

/** The text without the spaces (U+0020) at its ends; other white space stays. */
QString trimmedSpaces(const QString& text);

/** The text without spaces, tabs and line ends at its ends. */
std::string_view trimmed(std::string_view text) noexcept;

/**
 * The text cut, or padded with spaces on the right, to `width` characters as a person counts them: a letter
 * with its combining marks is one and is never cut in two.
 */
QString fitted(const QString& text, int width);

/**
 * The text with control characters and direction overrides shown instead of obeyed, on one line: a name that
 * a stranger has chosen must not rearrange the text beside it. Tabs and line ends become spaces.
 */
QString withControlsVisible(const QString& text);

/**
 * Whether the character is a control character, a direction override or the like, which is obeyed instead of
 * shown.
 */
bool isControlCharacter(QChar character) noexcept;

/**
 * The text in upper case; only the letters a to z change, as names in mail's header fields have no others.
 */
std::string upperCase(std::string_view text);

/**
 * A text as a signed 16-bit number: spaces around it are allowed, a fraction is rounded to the nearest whole
 * number (a half to the even one).
 * \throws RuntimeError 13 when the text is not a number, 6 when the number does not fit.
 */
std::int16_t toInteger16(const QString& text);

} // namespace platform
