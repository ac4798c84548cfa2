#include "components/smtplib/address_tokens.h"

#include "platform/runtime_error.h"

#include <algorithm>

namespace smtplib {

namespace {
bool isSpace(char character) noexcept {
    return character == ' ' || character == '\t';
}

bool isControl(char character) noexcept {
    return (static_cast<unsigned char>(character) < 0x20 && character != '\t') || character == '\x7f';
}
} // namespace

void refuseAddress() {
    throw platform::RuntimeError(platform::errors::BadAddress);
}

bool isBeyondAscii(char character) noexcept {
    return static_cast<unsigned char>(character) >= 0x80;
}

bool isLetterOrDigit(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

bool isAtomCharacter(char character) noexcept {
    constexpr std::string_view signs = "!#$%&'*+-/=?^_`{|}~";
    return isLetterOrDigit(character) || signs.find(character) != std::string_view::npos;
}

bool isDotAtom(std::string_view text) noexcept {
    const bool dotsInPlace = !text.empty() && text.front() != '.' && text.back() != '.' &&
                             text.find("..") == std::string_view::npos;
    return dotsInPlace && std::all_of(text.begin(), text.end(), [](char character) {
               return character == '.' || isAtomCharacter(character);
           });
}

AddressToken AddressTokens::next() {
    skipSpacesAndComments();
    if (position_ == text_.size()) {
        return {};
    }
    constexpr std::string_view specials = ",;:<>@";
    const char character = text_[position_];
    if (specials.find(character) != std::string_view::npos) {
        ++position_;
        return {AddressToken::Kind::Special, std::string(1, character)};
    }
    if (character == '"') {
        return quoted();
    }
    return character == '[' ? literal() : word();
}

char AddressTokens::take() {
    if (position_ == text_.size() || isControl(text_[position_])) {
        refuseAddress();
    }
    return text_[position_++];
}

void AddressTokens::skipSpacesAndComments() {
    while (position_ < text_.size() && (isSpace(text_[position_]) || text_[position_] == '(')) {
        if (take() == '(') {
            skipComment();
        }
    }
}

void AddressTokens::skipComment() {
    for (std::size_t depth = 1; depth > 0;) {
        switch (take()) {
        case '(':
            ++depth;
            break;
        case ')':
            --depth;
            break;
        case '\\':
            take();
            break;
        default:
            break;
        }
    }
}

AddressToken AddressTokens::quoted() {
    AddressToken token{AddressToken::Kind::Quoted, {}};
    ++position_;
    for (char character = take(); character != '"'; character = take()) {
        token.text += character == '\\' ? take() : character;
    }
    return token;
}

AddressToken AddressTokens::literal() {
    AddressToken token{AddressToken::Kind::Literal, "["};
    ++position_;
    // IP addresses and names of address families. RFC 5322 allows more characters, which no server expects.
    for (char character = take(); character != ']'; character = take()) {
        if (!isLetterOrDigit(character) && character != '.' && character != ':' && character != '-') {
            refuseAddress();
        }
        token.text += character;
    }
    token.text += ']';
    return token;
}

AddressToken AddressTokens::word() {
    const auto belongs = [](char character) {
        return character == '.' || isAtomCharacter(character) || isBeyondAscii(character);
    };
    const auto* const start = text_.begin() + position_;
    const auto* const end = std::find_if_not(start, text_.end(), belongs);
    if (end == start) {
        refuseAddress();
    }
    position_ += static_cast<std::size_t>(end - start);
    return {AddressToken::Kind::Word, std::string(start, end)};
}

} // namespace smtplib
