#include "standard/base64_text.h"

#include "standard/header_fields.h"

#include <algorithm>

namespace standard {

namespace {
bool isDigit(char character) noexcept {
    const auto letter = static_cast<unsigned char>(static_cast<unsigned char>(character) | 0x20U);
    return (letter >= 'a' && letter <= 'z') || (character >= '0' && character <= '9') || character == '+' ||
           character == '/';
}

bool isWhiteSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

std::int64_t digitsIn(std::string_view text) {
    return std::count_if(text.begin(), text.end(), isDigit);
}

/** Behind the padding that begins here, when so many digits stand before it; 0 when it is none. */
std::size_t endOfPadding(std::string_view text, std::size_t at, std::int64_t digits) {
    constexpr int digitsInGroup = 4;
    const auto inGroup = static_cast<int>(digits % digitsInGroup);
    if (inGroup < 2) {
        return 0;
    }
    const std::size_t second = text.find_first_not_of(" \t\r\n", at + 1);
    const bool isDouble = second != std::string_view::npos && text[second] == '=';
    return inGroup == 2 && isDouble ? second + 1 : at + 1;
}

/** Whether the text goes on with base64: a long run of its digits, or whole groups on a line. */
bool goesOn(std::string_view rest) {
    constexpr std::ptrdiff_t group = 4;
    constexpr std::size_t longRun = 72;
    rest = rest.substr(std::min(rest.find_first_not_of(" \t\r\n"), rest.size())).substr(0, longRun);
    const auto end = std::find_if_not(rest.begin(), rest.end(), isDigit);
    const std::ptrdiff_t digits = end - rest.begin();
    if (end != rest.end() && *end == '=') {
        return digits % group >= 2;
    }
    return digits > 0 && digits % group == 0 && (end == rest.end() || *end == '\r' || *end == '\n');
}

/** Where a line ends with the padding of whole groups, so that nothing behind it need be base64. */
std::size_t endOfPaddedLine(std::string_view content) {
    std::size_t counted = 0;
    std::int64_t digits = 0;
    for (std::size_t at = content.find('='); at != std::string_view::npos; at = content.find('=', at + 1)) {
        digits += digitsIn(content.substr(counted, at - counted));
        counted = at;
        const std::size_t end = at > 0 && isDigit(content[at - 1]) ? endOfPadding(content, at, digits) : 0;
        const char behind = end != 0 && end < content.size() ? content[end] : ' ';
        if (behind == '\r' || behind == '\n') {
            return end;
        }
    }
    return content.size();
}

/** Bytes of the words that base64 could have between blanks: whole groups, or longer than words are. */
std::int64_t bytesOfGroups(std::string_view content) {
    constexpr std::ptrdiff_t group = 4;
    constexpr std::ptrdiff_t longWord = 24;
    std::int64_t bytes = 0;
    for (auto at = content.begin(); at != content.end();) {
        const auto end = std::find_if(at, content.end(), isWhiteSpace);
        const std::ptrdiff_t length = end - at;
        const std::int64_t digits = std::count_if(at, end, isDigit);
        if (length % group == 0 || length >= longWord) {
            bytes += digits;
        }
        at = std::find_if_not(end, content.end(), isWhiteSpace);
    }
    return bytes;
}
} // namespace

void forEachBase64Piece(std::string_view content, const std::function<void(std::string_view)>& take) {
    std::size_t start = 0;
    std::size_t counted = 0;
    std::int64_t digits = 0;
    for (std::size_t at = content.find('='); at != std::string_view::npos; at = content.find('=', at)) {
        digits += digitsIn(content.substr(counted, at - counted));
        counted = at;
        const std::size_t end = endOfPadding(content, at, digits);
        if (end == 0) {
            ++at;
            continue;
        }
        take(content.substr(start, end - start));
        if (!goesOn(content.substr(end))) {
            return;
        }
        start = counted = at = end;
        digits = 0;
    }
    take(content.substr(start));
}

std::int64_t bytesOfPiece(std::string_view piece) {
    constexpr int bitsOfDigit = 6;
    constexpr int bitsOfByte = 8;
    return digitsIn(piece) * bitsOfDigit / bitsOfByte;
}

bool isMostlyBase64(std::string_view content) {
    content = content.substr(0, endOfPaddedLine(content));
    constexpr std::int64_t fewBlanks = 8;
    const std::int64_t digits = digitsIn(content);
    const std::int64_t lineEnds =
        std::count_if(content.begin(), content.end(), [](char byte) { return byte == '\r' || byte == '\n'; });
    const std::int64_t blanks =
        std::count_if(content.begin(), content.end(), [](char byte) { return byte == ' ' || byte == '\t'; });
    const std::int64_t padding = std::count(content.begin(), content.end(), '=');
    const std::int64_t foreign =
        static_cast<std::int64_t>(content.size()) - digits - lineEnds - blanks - padding;
    if (blanks * fewBlanks < digits) {
        return foreign <= digits + padding;
    }
    return bytesOfGroups(content) * 2 >= digits + foreign + padding;
}

} // namespace standard
