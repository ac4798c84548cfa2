#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace smtplib {

/** \throws RuntimeError 20401: the address is not one that can be sent to. */
[[noreturn]] void refuseAddress();

/** A part of a list of addresses. */
struct AddressToken {
    enum class Kind {
        Word,    ///< Characters of an atom (RFC 5322 section 3.2.3), dots, and bytes beyond ASCII.
        Quoted,  ///< The text inside a pair of quotes, without these and without backslashes.
        Literal, ///< A domain literal with its brackets.
        Special, ///< One of , ; : < > @
        End
    };

    Kind kind = Kind::End;
    std::string text;

    bool is(char special) const { return kind == Kind::Special && text.front() == special; }
};

/** Takes a list of addresses apart, leaving out spaces and comments (RFC 5322 section 3.2). */
class AddressTokens {
  public:
    explicit AddressTokens(std::string_view text) : text_(text) {}

    /**
     * Returns the next token, End when nothing is left.
     * \throws RuntimeError 20401 for a quote, bracket or comment without its end, and for a character that
     * has no place in a list of addresses.
     */
    AddressToken next();

    /** How far the text has been read, in bytes. */
    std::size_t position() const noexcept { return position_; }

  private:
    void skipSpacesAndComments();
    void skipComment();
    AddressToken quoted();
    AddressToken literal();
    AddressToken word();
    char take();

    std::string_view text_;
    std::size_t position_ = 0;
};

/** Whether the byte is a part of a character that ASCII does not have. */
bool isBeyondAscii(char character) noexcept;

/** True for ASCII's letters and digits, whatever the locale. */
bool isLetterOrDigit(char character) noexcept;

/** True for the characters of an atom (RFC 5322 section 3.2.3). */
bool isAtomCharacter(char character) noexcept;

/** True for atoms with single dots between them. */
bool isDotAtom(std::string_view text) noexcept;

} // namespace smtplib
