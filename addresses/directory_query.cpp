#include "addresses/directory_query.h"

#include "platform/text.h"

#include <array>
#include <vector>

namespace addresses {

namespace {
/** A byte as a backslash and two digits, which both RFCs know. */
std::string inDigits(char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(character);
    return {'\\', digits[code / 16U], digits[code % 16U]};
}

bool isControl(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7f;
}

std::vector<std::string_view> wordsOf(std::string_view typed) {
    constexpr std::string_view blanks = " \t\r\n";
    std::vector<std::string_view> words;
    typed = typed.substr(0, platform::wholeCharacters(typed, mostTypedBytes));
    while (words.size() < mostTypedWords) {
        const std::size_t begin = typed.find_first_not_of(blanks);
        if (begin == std::string_view::npos) {
            break;
        }
        typed.remove_prefix(begin);
        words.push_back(typed.substr(0, typed.find_first_of(blanks)));
        typed.remove_prefix(words.back().size());
    }
    return words;
}

std::string asFilterValue(std::string_view word) {
    std::string value;
    for (const char character : word) {
        const bool hasMeaning = std::string_view("*()\\").find(character) != std::string_view::npos;
        if (hasMeaning || isControl(character)) {
            value += inDigits(character);
        } else {
            value += character;
        }
    }
    return value;
}
} // namespace

std::string directoryFilter(std::string_view typed) {
    constexpr std::array<const char*, 6> attributes = {"cn", "sn", "givenName", "displayName", "mail", "uid"};
    std::string words;
    for (const std::string_view word : wordsOf(typed)) {
        words += "(|";
        for (const char* const attribute : attributes) {
            words += '(' + (std::string(attribute) + "=*") + asFilterValue(word) + "*)";
        }
        words += ')';
    }
    return words.empty() ? words : "(&(mail=*)" + words + ')';
}

std::string userBelow(std::string_view base, std::string_view user) {
    std::string name = "uid=";
    for (std::size_t at = 0; at < user.size(); ++at) {
        const char character = user[at];
        const bool hasMeaning = std::string_view("\"+,;<>\\=").find(character) != std::string_view::npos;
        const bool hasMeaningHere =
            (at == 0 && character == '#') || (character == ' ' && (at == 0 || at + 1 == user.size()));
        if (isControl(character)) {
            name += inDigits(character);
        } else if (hasMeaning || hasMeaningHere) {
            name += {'\\', character};
        } else {
            name += character;
        }
    }
    return base.empty() ? name : name + ',' + std::string(base);
}

} // namespace addresses
