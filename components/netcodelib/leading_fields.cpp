#include "components/netcodelib/leading_fields.h"

#include "platform/runtime_error.h"

#include <algorithm>

namespace netcodelib {

namespace {
bool isSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r';
}

bool isOfFieldName(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-';
}

bool isHeaderLine(std::string_view line) noexcept {
    if (line.size() > LeadingFields::kMaximumLineBytes || line.empty()) {
        return false;
    }
    const auto nameEnd = std::find_if_not(line.begin(), line.end(), isOfFieldName);
    const bool field = nameEnd != line.begin() && nameEnd != line.end() && *nameEnd == ':';
    return field || line.front() == ' ' || line.front() == '\t';
}
} // namespace

std::string_view LeadingFields::take(std::string_view piece) {
    if (passed_) {
        return piece;
    }
    held_.append(piece);
    std::string_view text = held_;
    for (;;) {
        const std::size_t lineFeed = text.find('\n');
        if (lineFeed == std::string_view::npos) {
            break;
        }
        takeLine(text.substr(0, lineFeed));
        if (passed_) {
            return text;
        }
        text.remove_prefix(lineFeed + 1);
    }
    if (text.size() > kMaximumLineBytes) {
        takeLine(text);
        return text;
    }
    held_.erase(0, held_.size() - text.size());
    return {};
}

std::string_view LeadingFields::takeLast() {
    if (passed_) {
        return {};
    }
    const bool inHeader = fieldSeen_;
    takeLine(held_);
    if (inHeader || !passed_) {
        throw platform::RuntimeError(platform::errors::BadEncodedText);
    }
    return held_;
}

/**
 * Takes one line, without its line feed. Sets passed_ when the line does not belong to the header any more.
 */
void LeadingFields::takeLine(std::string_view line) {
    const bool empty = std::all_of(line.begin(), line.end(), isSpace);
    if (!empty && isHeaderLine(line)) {
        fieldSeen_ = true;
        return;
    }
    if (!empty && fieldSeen_) {
        throw platform::RuntimeError(platform::errors::BadEncodedText);
    }
    passed_ = true;
}

} // namespace netcodelib
