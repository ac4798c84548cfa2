#include "standard/base64_text.h"

#include <algorithm>
#include <array>

namespace standard {

namespace {
constexpr bool isDigit(char character) noexcept {
    const auto letter = static_cast<unsigned char>(static_cast<unsigned char>(character) | 0x20U);
    return (letter >= 'a' && letter <= 'z') || (character >= '0' && character <= '9') || character == '+' ||
           character == '/';
}

constexpr bool isWhiteSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

/** How many characters of each kind a text has. */
struct Census {
    std::int64_t digits = 0;
    std::int64_t padding = 0;
    std::int64_t blanks = 0;
    std::int64_t foreign = 0;

    Census& operator+=(const Census& other) noexcept {
        digits += other.digits;
        padding += other.padding;
        blanks += other.blanks;
        foreign += other.foreign;
        return *this;
    }
};

constexpr unsigned kBitsOfCount = 16;

/** What each character adds to four counts in one number; line ends add nothing. */
constexpr std::array<std::uint64_t, 256> kCounts = [] {
    std::array<std::uint64_t, 256> counts{};
    for (std::size_t code = 0; code < counts.size(); ++code) {
        const char character = static_cast<char>(code);
        if (character != '\r' && character != '\n') {
            const unsigned place = isDigit(character)        ? 0
                                   : character == '='        ? 1
                                   : isWhiteSpace(character) ? 2
                                                             : 3;
            counts.at(code) = std::uint64_t{1} << (place * kBitsOfCount);
        }
    }
    return counts;
}();

Census censusOf(std::string_view text) {
    constexpr std::size_t block = (1U << kBitsOfCount) - 1;
    constexpr std::uint64_t mask = block;
    Census census;
    for (; !text.empty(); text.remove_prefix(std::min(block, text.size()))) {
        std::uint64_t counts = 0;
        for (const char character : text.substr(0, block)) {
            counts += kCounts[static_cast<unsigned char>(character)]; // NOLINT: 256 for all values of a byte
        }
        census += {static_cast<std::int64_t>(counts & mask),
                   static_cast<std::int64_t>((counts >> kBitsOfCount) & mask),
                   static_cast<std::int64_t>((counts >> (2 * kBitsOfCount)) & mask),
                   static_cast<std::int64_t>(counts >> (3 * kBitsOfCount))};
    }
    return census;
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

/** The part of a content that has to be base64, and what is in it. */
struct Examined {
    std::size_t length = 0;
    Census census;
};

/** Examines up to a line that ends with the padding of whole groups: nothing behind it need be base64. */
Examined examine(std::string_view content) {
    Examined result;
    while (result.length < content.size()) {
        const std::size_t sign = std::min(content.find('=', result.length), content.size());
        result.census += censusOf(content.substr(result.length, sign - result.length));
        result.length = sign;
        if (sign == content.size()) {
            break;
        }
        const bool isBehindDigit = sign > 0 && isDigit(content[sign - 1]);
        const std::size_t end = isBehindDigit ? endOfPadding(content, sign, result.census.digits) : 0;
        const char behind = end != 0 && end < content.size() ? content[end] : ' ';
        const bool endsLine = behind == '\r' || behind == '\n';
        const std::size_t next = endsLine ? end : sign + 1;
        result.census += censusOf(content.substr(sign, next - sign));
        result.length = next;
        if (endsLine) {
            break;
        }
    }
    return result;
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
        digits += censusOf(content.substr(counted, at - counted)).digits;
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

namespace {
bool isMostlyBase64(std::string_view content, const Census& census) {
    constexpr std::int64_t fewBlanks = 8;
    if (census.blanks * fewBlanks < census.digits) {
        return census.foreign <= census.digits + census.padding;
    }
    return bytesOfGroups(content) * 2 >= census.digits + census.foreign + census.padding;
}

std::int64_t bytesOfDigits(std::int64_t digits) {
    constexpr int bitsOfDigit = 6;
    constexpr int bitsOfByte = 8;
    return digits * bitsOfDigit / bitsOfByte;
}
} // namespace

bool isMostlyBase64(std::string_view content) {
    const Examined examined = examine(content);
    return isMostlyBase64(content.substr(0, examined.length), examined.census);
}

std::int64_t bytesOfBase64(std::string_view content) {
    const Examined examined = examine(content);
    if (!isMostlyBase64(content.substr(0, examined.length), examined.census)) {
        return static_cast<std::int64_t>(content.size());
    }
    const std::string_view first = content.substr(0, examined.length);
    const auto signsAtTheEnd = first.size() - (first.find_last_not_of('=') + 1);
    const bool isOnePiece = static_cast<std::size_t>(examined.census.padding) == signsAtTheEnd &&
                            !goesOn(content.substr(examined.length));
    if (isOnePiece) {
        return bytesOfDigits(examined.census.digits);
    }
    std::int64_t bytes = 0;
    forEachBase64Piece(content,
                       [&bytes](std::string_view piece) { bytes += bytesOfDigits(censusOf(piece).digits); });
    return bytes;
}

} // namespace standard
