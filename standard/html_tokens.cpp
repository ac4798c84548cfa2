#include "standard/html_tokens.h"

#include "standard/header_fields.h"

#include <algorithm>
#include <array>

namespace standard {

namespace {
constexpr std::string_view kWhiteSpace = " \t\r\n\f";

bool isLetter(char character) noexcept {
    const auto letter = static_cast<unsigned char>(static_cast<unsigned char>(character) | 0x20U);
    return letter >= 'a' && letter <= 'z';
}

/** Elements whose content is not text of the document. */
bool holdsNoText(std::string_view name) {
    constexpr std::array<std::string_view, 8> names = {"script",   "style",   "title", "iframe",
                                                       "noframes", "noembed", "xml",   "template"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

/** One attribute, and where the next one begins. */
struct Attribute {
    std::string_view name;
    std::string_view value;
    std::size_t end = 0;
};

/**
 * The attribute at or behind `at`; its name is empty where the tag ends with '>' or with the text. When the
 * second quote of a value is missing, the value ends with the tag.
 */
Attribute attributeAt(std::string_view text, std::size_t at) {
    at = std::min(text.find_first_not_of(" \t\r\n\f/", at), text.size());
    if (at == text.size() || text[at] == '>') {
        return {{}, {}, at};
    }
    const std::size_t nameEnd = std::min(text.find_first_of(" \t\r\n\f/>=", at + 1), text.size());
    Attribute attribute{text.substr(at, nameEnd - at), {}, nameEnd};
    const std::size_t sign = text.find_first_not_of(kWhiteSpace, nameEnd);
    if (sign == std::string_view::npos || text[sign] != '=') {
        return attribute;
    }
    const std::size_t from = std::min(text.find_first_not_of(kWhiteSpace, sign + 1), text.size());
    const bool isQuoted = from < text.size() && (text[from] == '"' || text[from] == '\'');
    const std::size_t closing = isQuoted ? text.find(text[from], from + 1) : std::string_view::npos;
    if (closing != std::string_view::npos) {
        attribute.value = text.substr(from + 1, closing - from - 1);
        attribute.end = closing + 1;
        return attribute;
    }
    const std::size_t valueFrom = from + (isQuoted ? 1 : 0);
    attribute.end = std::min(text.find_first_of(isQuoted ? ">" : " \t\r\n\f>", from), text.size());
    attribute.value = text.substr(valueFrom, attribute.end - valueFrom);
    return attribute;
}
} // namespace

std::optional<HtmlToken> HtmlTokens::next() {
    while (!rest_.empty()) {
        if (rest_.starts_with("<!--")) {
            rest_.remove_prefix(4);
            // <!--> and <!---> are whole comments.
            const bool isWhole = rest_.starts_with('>') || rest_.starts_with("->");
            skipPast(isWhole ? ">" : "-->");
            continue;
        }
        const char second = rest_.size() > 1 ? rest_[1] : ' ';
        const char third = rest_.size() > 2 ? rest_[2] : ' ';
        if (rest_.front() == '<' && (isLetter(second) || (second == '/' && isLetter(third)))) {
            if (auto found = tag()) {
                return found;
            }
            continue;
        }
        if (rest_.front() == '<' && (second == '!' || second == '?' || second == '/')) {
            skipPast(">");
            continue;
        }
        const std::size_t end = std::min(rest_.find('<', 1), rest_.size());
        HtmlToken token;
        token.text = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return token;
    }
    return std::nullopt;
}

std::optional<HtmlToken> HtmlTokens::tag() {
    HtmlToken token;
    const bool isEnd = rest_[1] == '/';
    token.kind = isEnd ? HtmlToken::Kind::End : HtmlToken::Kind::Start;
    rest_.remove_prefix(isEnd ? 2 : 1);
    const std::size_t nameEnd = std::min(rest_.find_first_of(" \t\r\n\f/>"), rest_.size());
    constexpr std::size_t longestName = 30;
    token.name = lowerCase(rest_.substr(0, std::min(nameEnd, longestName)));
    std::size_t end = nameEnd;
    for (Attribute attribute = attributeAt(rest_, end); !attribute.name.empty();
         attribute = attributeAt(rest_, end)) {
        end = attribute.end;
    }
    end = std::min(rest_.find_first_not_of(" \t\r\n\f/", end), rest_.size());
    token.attributes = rest_.substr(nameEnd, end - nameEnd);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (!isEnd && holdsNoText(token.name)) {
        skipContentOf(token.name);
        return std::nullopt;
    }
    return token;
}

void HtmlTokens::skipPast(std::string_view mark) {
    const std::size_t found = rest_.find(mark);
    rest_.remove_prefix(found == std::string_view::npos ? rest_.size() : found + mark.size());
}

void HtmlTokens::skipContentOf(std::string_view name) {
    for (std::size_t at = rest_.find("</"); at != std::string_view::npos; at = rest_.find("</", at + 2)) {
        if (sameWord(rest_.substr(at + 2, name.size()), name)) {
            rest_.remove_prefix(at);
            return;
        }
    }
    rest_ = {};
}

std::optional<std::string> attributeOf(std::string_view attributes, std::string_view name) {
    for (Attribute attribute = attributeAt(attributes, 0); !attribute.name.empty();
         attribute = attributeAt(attributes, attribute.end)) {
        if (sameWord(attribute.name, name)) {
            return withoutReferences(attribute.value, true);
        }
    }
    return std::nullopt;
}

} // namespace standard
