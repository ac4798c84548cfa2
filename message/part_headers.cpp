#include "message/part_headers.h"

#include <algorithm>

namespace {
/**
 * The position of the key at or after `from`. It is looked for by its "-" or "=": encoded text hardly has
 * these, so that even a large attachment is passed over as fast as memory is read.
 */
std::size_t findKey(std::string_view key, std::string_view text, std::size_t from) {
    const std::size_t sign = key.find_first_of("-=");
    for (std::size_t at = text.find(key[sign], from + sign); at != std::string_view::npos;
         at = text.find(key[sign], at + 1)) {
        if (text.substr(at - sign).starts_with(key)) {
            return at - sign;
        }
    }
    return std::string_view::npos;
}
} // namespace

std::string_view withoutPartHeaders(std::string_view text) {
    for (const std::string_view key : kPartHeaderKeys) {
        const std::size_t found = findKey(key, text, 0);
        if (found == std::string_view::npos) {
            continue;
        }
        const std::size_t lineFeed = text.find('\n', found);
        if (lineFeed != std::string_view::npos) {
            text.remove_prefix(lineFeed + 1);
        }
    }
    return text;
}

void StrippedText::set(std::string_view text) {
    text_ = text;
    front_ = 0;
    searchedUntil_.fill(0);
}

void StrippedText::setOrAppend(std::string_view text) {
    if (empty()) {
        set(text);
    } else {
        text_.append("\r\n").append(text);
    }
}

void StrippedText::strip() {
    for (std::size_t i = 0; i < kPartHeaderKeys.size(); ++i) {
        const std::string_view key = kPartHeaderKeys.at(i);
        std::size_t& searchedUntil = searchedUntil_.at(i);
        const std::size_t found = findKey(key, text_, std::max(front_, searchedUntil));
        if (found == std::string::npos) {
            // A key that is cut off at the end may be completed by text that is added later.
            searchedUntil = text_.size() - std::min(text_.size(), key.size() - 1);
            continue;
        }
        searchedUntil = found;
        const std::size_t lineFeed = text_.find('\n', found);
        if (lineFeed != std::string::npos) {
            front_ = lineFeed + 1;
        }
    }
}
