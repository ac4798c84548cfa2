#include "mailserver/incoming_text.h"

#include <algorithm>

namespace mailserver {

std::string_view IncomingText::take(std::string_view bytes) {
    text_.append(bytes);
    for (std::size_t end = 0; (end = text_.find("\r\n", lookedUntil_)) != std::string::npos;) {
        const std::string_view line = std::string_view(text_).substr(lineStart_, end - lineStart_);
        if (line == ".") {
            const std::size_t rest = text_.size() - (end + 2);
            text_.resize(isTooLarge_ ? 0 : lineStart_);
            isComplete_ = true;
            return bytes.substr(bytes.size() - rest);
        }
        size_ += line.size() + 2 - (line.starts_with('.') ? 1 : 0);
        isTooLarge_ = isTooLarge_ || line.size() > kMaximumLineBytes || size_ > maximumBytes_;
        lineStart_ = end + 2;
        lookedUntil_ = lineStart_;
    }
    // A CR at the very end may be the first half of the line end.
    lookedUntil_ = std::max(lineStart_, text_.ends_with('\r') ? text_.size() - 1 : text_.size());
    isTooLarge_ = isTooLarge_ || text_.size() - lineStart_ > kMaximumLineBytes + 1;
    if (isTooLarge_) {
        forgetLines();
    }
    return {};
}

/** Keeps of the line that has begun what tells whether it is a dot alone. */
void IncomingText::forgetLines() {
    constexpr std::size_t kept = 3;
    text_.erase(0, lineStart_);
    if (text_.size() > kept) {
        text_.erase(kept - 1, text_.size() - kept);
    }
    lineStart_ = 0;
    lookedUntil_ = text_.ends_with('\r') ? text_.size() - 1 : text_.size();
}

std::string withoutDoubledDots(std::string_view lines) {
    std::string text;
    text.reserve(lines.size());
    if (lines.starts_with('.')) {
        lines.remove_prefix(1);
    }
    for (std::size_t dot = 0; (dot = lines.find("\r\n.")) != std::string_view::npos;) {
        text.append(lines.substr(0, dot + 2));
        lines.remove_prefix(dot + 3);
    }
    return text.append(lines);
}

} // namespace mailserver
