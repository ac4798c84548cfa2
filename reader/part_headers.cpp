#include "reader/part_headers.h"

#include <algorithm>

std::string_view withoutPartHeaders(std::string_view text) {
    for (const std::string_view key : kPartHeaderKeys) {
        const std::size_t found = text.find(key);
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
        const std::size_t found = text_.find(key, std::max(front_, searchedUntil));
        if (found == std::string::npos) {
            // A key that is cut off at the end may be completed by what is added.
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
