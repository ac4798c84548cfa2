#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standard {

/** A stretch of text, or a tag, of an HTML document. */
struct HtmlToken {
    enum class Kind : std::uint8_t { Text, Start, End };

    Kind kind = Kind::Text;
    /** The text as it stands, with its character references. */
    std::string_view text;
    /** The name of the tag, in lower case. */
    std::string name;
    /** What stands in the tag behind its name. */
    std::string_view attributes;
};

/**
 * Cuts an HTML document into texts and tags, in time and memory that only its length decides, whatever it
 * holds. Comments, declarations and what is no text of the document (scripts, styles, the title, frames) are
 * left out. A sign that begins no tag is text.
 */
class HtmlTokens {
  public:
    explicit HtmlTokens(std::string_view document) : rest_(document) {}

    /** The next token; nothing at the end. */
    std::optional<HtmlToken> next();

  private:
    std::optional<HtmlToken> tag();
    void skipPast(std::string_view mark);
    void skipContentOf(std::string_view name);

    std::string_view rest_;
};

/** The value of an attribute, its character references decoded; nothing when the tag has none such. */
std::optional<std::string> attributeOf(std::string_view attributes, std::string_view name);

/** A text with its character references decoded; UTF-8. \param inAttribute Only those that have their end. */
std::string withoutReferences(std::string_view text, bool inAttribute);

} // namespace standard
