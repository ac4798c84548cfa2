#include "standard/part_text.h"

#include "standard/charset_decoder.h"
#include "standard/flowed_text.h"
#include "standard/html_text.h"
#include "standard/transfer_decoder.h"

#include <algorithm>
#include <utility>

namespace standard {

namespace {
constexpr std::string_view kCannotBeDecoded = "[This part cannot be decoded.]\r\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/** Whether each line feed has its carriage return, and each carriage return its line feed. */
bool hasLineEnds(std::string_view text) {
    for (std::size_t at = text.find_first_of("\r\n"); at != std::string_view::npos;
         at = text.find_first_of("\r\n", at + 2)) {
        if (!text.substr(at).starts_with("\r\n")) {
            return false;
        }
    }
    return true;
}

/** The text with CR LF for each line end of any kind. */
std::string withLineEnds(std::string text) {
    if (hasLineEnds(text)) {
        return text;
    }
    std::string result;
    result.reserve(text.size() + text.size() / 32);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\r' && text[at] != '\n') {
            result.push_back(text[at]);
            continue;
        }
        result += "\r\n";
        at += text.compare(at, 2, "\r\n") == 0 ? 1 : 0;
    }
    return result;
}

std::string charsetOf(const Entity& part) {
    const std::string_view named = part.typeField().textOf("charset");
    if (named.empty() && part.type() == "text/html") {
        return charsetOfHtml(part.content());
    }
    return std::string(named);
}
} // namespace

std::string decodedTextOfPart(const Entity& part) {
    std::string text;
    CharsetDecoder charset(charsetOf(part));
    decode(part.content(), part.encoding(), [&](std::string_view bytes) { charset.append(bytes, text); });
    charset.finish(text);
    if (text.starts_with(kByteOrderMark)) {
        text.erase(0, kByteOrderMark.size());
    }
    return withLineEnds(std::move(text));
}

std::string textOfPart(const Entity& part) {
    if (!isDecodable(part.content(), part.encoding())) {
        return std::string(kCannotBeDecoded) + withLineEnds(toUtf8(part.content()));
    }
    std::string text = decodedTextOfPart(part);
    if (part.type() == "text/html") {
        return textOfHtml(text);
    }
    if (part.type() == "text/plain" && sameWord(part.typeField().textOf("format"), "flowed")) {
        return rejoined(text, sameWord(part.typeField().textOf("delsp"), "yes"));
    }
    return text;
}

} // namespace standard
