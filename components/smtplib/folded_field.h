#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/**
 * One field of a header that is folded while it grows (RFC 5322 section 2.2.3). It is made of units that
 * begin with a space; a fold goes before such a space and nowhere else, so that unfolding brings the value
 * back.
 */
class FoldedField {
  public:
    /** Lines that hold an encoded word may have so many characters (RFC 2047 section 2); others keep to it
     * too. */
    static constexpr std::size_t kPreferredLineCharacters = 76;

    /** The name has its colon. */
    explicit FoldedField(std::string_view nameAndColon);

    /** Adds a unit, on a new line when it does not fit into this one. */
    void add(std::string_view unit);

    /** Adds units, and folds between them only when no line could hold them all. */
    void addTogether(const std::vector<std::string>& units);

    /** The field's lines, CR LF behind each. */
    std::string lines() const { return text_ + "\r\n"; }

  private:
    void makeRoomFor(std::size_t characters);

    std::string text_;
    std::size_t lineStart_ = 0;
    /** Nothing stands on this line but the name: a fold here would leave it alone. */
    bool onlyName_ = true;
};

/**
 * Returns the units of unstructured text, such as a subject, in UTF-8. Text outside printable ASCII, and a
 * word that no line could hold, makes the whole of it encoded words. Encoded words that are in the text
 * already, because it was taken from another message, stay what they are.
 */
std::vector<std::string> unitsOfText(std::string_view text);

/** The same for the name before an address: atoms, a quoted text, or encoded words; none for no name. */
std::vector<std::string> unitsOfName(std::string_view name, bool quoted);

} // namespace smtplib
