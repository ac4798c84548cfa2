#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/**
 * A header field that is folded while it grows (RFC 5322 section 2.2.3). It consists of units that begin with
 * a space. A fold goes before such a space and nowhere else, so that unfolding restores the value.
 */
class FoldedField {
  public:
    /**
     * Longest line that holds an encoded word, in characters (RFC 2047 section 2). Other lines keep to it
     * where their units allow.
     */
    static constexpr std::size_t kPreferredLineCharacters = 76;

    /** Begins with the field's name and its colon. */
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
    /** The line holds only the field's name, which must not stand alone on a line. */
    bool onlyName_ = true;
};

/**
 * Returns the units of unstructured text, such as a subject, in UTF-8. Text that holds anything but printable
 * ASCII and tabs, or a word too long for a line, becomes encoded words as a whole. Encoded words that the
 * text holds already, as a subject from another message may, stay as they are.
 */
std::vector<std::string> unitsOfText(std::string_view text);

/**
 * The same for the name before an address: atoms, a quoted string, or encoded words; no units for an empty
 * name.
 */
std::vector<std::string> unitsOfName(std::string_view name, bool quoted);

} // namespace smtplib
