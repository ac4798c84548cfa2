#include "standard/html_text.h"

#include "standard/header_fields.h"
#include "standard/html_layout.h"
#include "standard/html_tokens.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace standard {

namespace {
using Kind = HtmlToken::Kind;

template <std::size_t Count>
bool isOneOf(std::string_view name, const std::array<std::string_view, Count>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/** Elements with an empty line around them. */
constexpr std::array<std::string_view, 10> kParagraphs = {"p",  "h1", "h2", "h3",  "h4",
                                                          "h5", "h6", "dl", "pre", "blockquote"};
/** Elements that begin a line. */
constexpr std::array<std::string_view, 20> kBlocks = {
    "div",    "address", "article", "aside",  "body",   "caption", "center", "dd",     "dt",      "fieldset",
    "figure", "footer",  "form",    "header", "legend", "main",    "nav",    "option", "section", "details"};

/** Addresses that lead nowhere, or run something. */
bool isNoAddress(std::string_view address) {
    const std::string start = lowerCase(address.substr(0, 12));
    return address.empty() || address.starts_with('#') || start.starts_with("javascript:") ||
           start.starts_with("vbscript:") || start.starts_with("data:") || start.starts_with("cid:");
}

/** What of an address tells one from another: without its scheme and its last slash. */
std::string_view essence(std::string_view address) {
    for (const std::string_view scheme : {"http://", "https://", "mailto:", "tel:"}) {
        if (sameWord(address.substr(0, scheme.size()), scheme)) {
            address.remove_prefix(scheme.size());
        }
    }
    return address.ends_with('/') ? address.substr(0, address.size() - 1) : address;
}

/** Converts one document. */
class Converter {
  public:
    explicit Converter(std::string_view document) : tokens_(document), layout_(document.size()) {}

    std::string convert() {
        while (const auto token = tokens_.next()) {
            if (token->kind == Kind::Text) {
                addText(withoutReferences(token->text, false));
            } else if (!takeLink(*token) && !takeTable(*token) && !takeList(*token)) {
                takeBlock(*token);
            }
        }
        endLink();
        return layout_.takeText();
    }

  private:
    void addText(std::string_view text) {
        if (preformatted_ > 0) {
            layout_.addPreformatted(text);
        } else {
            layout_.addText(text);
        }
    }

    bool takeLink(const HtmlToken& token) {
        if (token.name != "a") {
            return false;
        }
        endLink();
        if (token.kind == Kind::Start) {
            address_ = attributeOf(token.attributes, "href").value_or(std::string());
            std::erase_if(address_, [](char letter) { return static_cast<unsigned char>(letter) <= ' '; });
            linkFrom_ = layout_.size();
        }
        return true;
    }

    /** Writes the address behind the link's text, unless the text is the address. */
    void endLink() {
        const std::string_view text = trimmed(layout_.since(linkFrom_));
        if (!isNoAddress(address_) && !sameWord(essence(text), essence(address_))) {
            layout_.addText(text.empty() ? "<" : " <");
            layout_.addText(address_ + ">");
        }
        address_.clear();
    }

    bool takeTable(const HtmlToken& token) {
        const bool starts = token.kind == Kind::Start;
        if (token.name == "table") {
            starts ? layout_.beginTable() : layout_.endTable();
        } else if (token.name == "tr") {
            layout_.beginRow();
        } else if (token.name == "td" || token.name == "th") {
            starts ? layout_.beginCell() : layout_.endCell();
        } else {
            return false;
        }
        return true;
    }

    bool takeList(const HtmlToken& token) {
        const bool starts = token.kind == Kind::Start;
        if (token.name == "ul" || token.name == "ol" || token.name == "menu" || token.name == "dir") {
            layout_.breakBlock(1);
            starts ? layout_.beginList(token.name == "ol" ? firstNumber(token) : -1) : layout_.endList();
        } else if (token.name == "li") {
            starts ? layout_.beginItem() : layout_.endItem();
        } else {
            return false;
        }
        return true;
    }

    static int firstNumber(const HtmlToken& token) {
        constexpr int most = 1'000'000;
        const std::string start = attributeOf(token.attributes, "start").value_or("1");
        int number = 1;
        std::from_chars(start.data(), start.data() + start.size(), number);
        return std::clamp(number, 0, most);
    }

    void takeBlock(const HtmlToken& token) {
        const bool starts = token.kind == Kind::Start;
        if (token.name == "br") {
            layout_.endLine();
        } else if (token.name == "hr") {
            layout_.addRule();
        } else if (token.name == "img" && starts) {
            takePicture(token);
        } else if (isOneOf(token.name, kParagraphs)) {
            layout_.breakBlock(2);
        } else if (isOneOf(token.name, kBlocks)) {
            layout_.breakBlock(1);
        }
        if (token.name == "pre") {
            preformatted_ = std::max(0, preformatted_ + (starts ? 1 : -1));
        } else if (token.name == "blockquote") {
            starts ? layout_.beginQuotation() : layout_.endQuotation();
        }
    }

    void takePicture(const HtmlToken& token) {
        const std::string description = attributeOf(token.attributes, "alt").value_or(std::string());
        if (!trimmed(description).empty()) {
            layout_.addText("[" + std::string(trimmed(description)) + "]");
        }
    }

    HtmlTokens tokens_;
    HtmlLayout layout_;
    int preformatted_ = 0;
    /** The address of the link that is open; empty for none. */
    std::string address_;
    std::size_t linkFrom_ = 0;
};
} // namespace

std::string textOfHtml(std::string_view document) {
    return Converter(document).convert();
}

std::string charsetOfHtml(std::string_view document) {
    constexpr std::size_t looked = 2048;
    constexpr std::string_view key = "charset=";
    const std::string start = lowerCase(document.substr(0, looked));
    const std::size_t meta = start.find("<meta");
    const std::size_t found = meta == std::string::npos ? meta : start.find(key, meta);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t from = start.find_first_not_of("\"' ", found + key.size());
    const std::size_t end = start.find_first_of("\"' ;/>", from);
    return from == std::string::npos || end == std::string::npos ? std::string()
                                                                 : start.substr(from, end - from);
}

} // namespace standard
