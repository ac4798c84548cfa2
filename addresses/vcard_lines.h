#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace addresses {

/** A line of a vCard, taken apart (RFC 6350 section 3.3). */
struct CardProperty {
    struct Parameter {
        /** In upper case; TYPE for a value that stands alone, as in 2.1. */
        std::string name;
        /** Without its quotes. */
        std::string value;
    };

    /** In upper case, without the group before it; empty for a line that is no property. */
    std::string name;
    std::vector<Parameter> parameters;
    /** As it stands in the card, quoted-printable decoded. */
    std::string value;
};

/** Takes the lines of a file of vCards apart, unfolded. */
class CardLines {
  public:
    /** Longest line, unfolded, in bytes. What is longer, as a picture, counts as no property. */
    static constexpr std::size_t longestLine = 16'384;

    /** The text must outlive this object. */
    explicit CardLines(std::string_view text);

    bool atEnd() const noexcept { return rest_.empty(); }

    /** The next one; there must be one. */
    CardProperty next();

  private:
    std::string_view takeLine();
    std::string takeUnfolded();

    std::string_view rest_;
};

/** The parts of a value between separators without a backslash before them; nothing is unescaped. */
std::vector<std::string_view> partsOfValue(std::string_view value, char separator);

/** The text of a value in UTF-8, with the characters for which backslashes stand (RFC 6350 section 3.4). */
std::string textOfValue(std::string_view value);

} // namespace addresses
