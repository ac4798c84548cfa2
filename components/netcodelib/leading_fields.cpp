#include "components/netcodelib/leading_fields.h"

#include <algorithm>

namespace NetCodeLib {

namespace {
bool isBlank(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r';
}

/** RFC 5322 section 3.6.8: a field's name has printable characters, and no blank before its colon. */
bool beginsWithFieldName(std::string_view line) noexcept {
    const auto colon = std::find_if(line.begin(), line.end(), [](char character) {
        return character <= ' ' || character > '~' || character == ':';
    });
    if (colon == line.begin() || colon == line.end() || *colon != ':') {
        return false;
    }
    return colon + 1 == line.end() || isBlank(*(colon + 1));
}
} // namespace

std::string_view LeadingFields::take(std::string_view piece) {
    if (passed_) {
        return piece;
    }
    held_.append(piece);
    std::string_view text = held_;
    while (!passed_) {
        const std::size_t lineFeed = text.find('\n');
        if (lineFeed == std::string_view::npos) {
            break;
        }
        // However the text is cut: a line that would not have been waited for is none when it comes whole
        // either.
        if (lineFeed <= kMaximumLineBytes && isHeaderLine(text.substr(0, lineFeed))) {
            text.remove_prefix(lineFeed + 1);
        } else {
            passed_ = true;
        }
    }
    if (!passed_ && text.size() <= kMaximumLineBytes) {
        held_.erase(0, held_.size() - text.size());
        return {};
    }
    passed_ = true;
    return text;
}

std::string_view LeadingFields::takeLast() {
    if (passed_ || isHeaderLine(held_)) {
        return {};
    }
    passed_ = true;
    return held_;
}

/** True for a line to be dropped; the empty line that ends the fields is the last one. */
bool LeadingFields::isHeaderLine(std::string_view line) {
    if (std::all_of(line.begin(), line.end(), isBlank)) {
        passed_ = fieldSeen_;
        return true;
    }
    if (fieldSeen_ && isBlank(line.front())) {
        return true; // a folded line (RFC 5322 section 2.2.3)
    }
    if (!beginsWithFieldName(line)) {
        return false;
    }
    fieldSeen_ = true;
    return true;
}

} // namespace NetCodeLib
