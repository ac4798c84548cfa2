#include "components/controls/shown_lines.h"

#include "platform/text.h"

#include <algorithm>

namespace controls {

ShownLines::ShownLines(std::string_view text)
    : text_(text), carriageReturn_(text.find('\r')), lineFeed_(text.find('\n')) {}

std::string_view ShownLines::next() {
    const std::string_view line = text_.substr(position_, lineLength());
    position_ += line.size();
    hasNext_ = position_ < text_.size() || !lineEnd(line).empty();
    return line;
}

std::size_t ShownLines::lineLength() {
    // CR and LF are searched for again only after the last one found, so each byte is read once for each.
    if (carriageReturn_ < position_) {
        carriageReturn_ = text_.find('\r', position_);
    }
    if (lineFeed_ < position_) {
        lineFeed_ = text_.find('\n', position_);
    }
    const std::size_t end = std::min(carriageReturn_, lineFeed_);
    if (end != std::string_view::npos && end - position_ <= kLongestShownLine) {
        return end - position_ + (end == carriageReturn_ && lineFeed_ == end + 1 ? 2 : 1);
    }
    return platform::wholeCharacters(text_.substr(position_), kLongestShownLine);
}

std::string_view lineEnd(std::string_view line) noexcept {
    if (line.ends_with("\r\n")) {
        return line.substr(line.size() - 2);
    }
    const bool ended = line.ends_with('\n') || line.ends_with('\r');
    return line.substr(line.size() - (ended ? 1 : 0));
}

QString shownLine(std::string_view line) {
    line.remove_suffix(lineEnd(line).size());
    return holdable(platform::fromBytes(line));
}

QString holdable(QString text) {
    for (QChar& letter : text) {
        const char16_t code = letter.unicode();
        if (code == 0 || code == 0x2029 || code == 0xFDD0 || code == 0xFDD1) {
            letter = QChar::ReplacementCharacter;
        }
    }
    return text;
}

} // namespace controls
