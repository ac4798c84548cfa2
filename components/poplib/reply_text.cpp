#include "components/poplib/reply_text.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <system_error>

namespace poplib {

namespace {
/** Takes the number at the front of the text, and the space behind it. */
std::int64_t takeNumber(std::string_view& text) {
    std::uint32_t small = 0;
    const char* const end = text.data() + text.size();
    const auto [next, problem] = std::from_chars(text.data(), end, small);
    if (problem == std::errc::result_out_of_range) {
        throw platform::RuntimeError(platform::errors::Overflow);
    }
    const bool ends = next == end || *next == ' ';
    if (problem != std::errc{} || !ends) {
        throw platform::RuntimeError(platform::errors::MailServerTrouble);
    }
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    if (!text.empty()) {
        text.remove_prefix(1);
    }
    return small;
}

/** Whether a word of the text, which is in capitals, begins so. */
bool hasWord(std::string_view text, std::string_view beginning) {
    const auto isLetter = [](char character) { return character >= 'A' && character <= 'Z'; };
    for (std::size_t at = text.find(beginning); at != std::string_view::npos;
         at = text.find(beginning, at + 1)) {
        if (at == 0 || !isLetter(text[at - 1])) {
            return true;
        }
    }
    return false;
}
} // namespace

TwoNumbers twoNumbers(std::string_view text) {
    TwoNumbers numbers;
    numbers.first = takeNumber(text);
    numbers.second = takeNumber(text);
    return numbers;
}

std::int64_t leadingNumber(std::string_view text) {
    return takeNumber(text);
}

std::optional<NumberedText> numberedText(std::string_view line) {
    const std::size_t space = line.find(' ');
    NumberedText numbered;
    const char* const end = line.data() + std::min(space, line.size());
    const auto [next, problem] = std::from_chars(line.data(), end, numbered.number);
    if (space == std::string_view::npos || problem != std::errc{} || next != end) {
        return std::nullopt;
    }
    numbered.text = line.substr(space + 1);
    return numbered;
}

std::optional<UniqueId> uniqueId(std::string_view line) {
    constexpr std::size_t longest = 70; // bytes
    const auto numbered = numberedText(line);
    const bool usable = numbered && !numbered->text.empty() && numbered->text.size() <= longest;
    return usable ? std::optional(UniqueId{numbered->number, numbered->text}) : std::nullopt;
}

bool hasResponseCode(std::string_view text) {
    return text.starts_with('[') && text.find(']') != std::string_view::npos;
}

bool hasCode(std::string_view text, std::string_view known) {
    const std::size_t end = text.find(']');
    if (!hasResponseCode(text)) {
        return false;
    }
    const std::string code = platform::upperCase(text.substr(1, end - 1));
    return code.starts_with(known) &&
           (code.size() == known.size() || code[known.size()] == ' ' || code[known.size()] == '/');
}

bool isForGood(std::string_view text) {
    return hasCode(text, "SYS/PERM");
}

bool demandsEncryption(std::string_view text) {
    // "Plaintext authentication disallowed", "USER command only available under a layer", "TLS required".
    const std::string words = platform::upperCase(text);
    const std::initializer_list<std::string_view> signs = {"PLAINTEXT", "PLAIN TEXT", "CLEARTEXT",
                                                           "CLEAR TEXT", "ENCRYPT"};
    // Short ones are parts of other words: many a reply repeats the name of player1.
    const std::initializer_list<std::string_view> beginnings = {"LAYER", "TLS", "SSL", "STLS", "STARTTLS"};
    return std::any_of(signs.begin(), signs.end(),
                       [&words](std::string_view sign) { return words.find(sign) != std::string::npos; }) ||
           std::any_of(beginnings.begin(), beginnings.end(),
                       [&words](std::string_view beginning) { return hasWord(words, beginning); });
}

bool mayBeTriedLater(std::string_view text) {
    return hasCode(text, "IN-USE") || hasCode(text, "LOGIN-DELAY") || hasCode(text, "SYS/TEMP");
}

} // namespace poplib
