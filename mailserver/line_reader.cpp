#include "mailserver/line_reader.h"

#include <algorithm>

namespace mailserver {

void LineReader::append(std::string_view bytes) {
    bytes_.erase(0, start_);
    lookedUntil_ -= std::min(lookedUntil_, start_);
    start_ = 0;
    bytes_.append(bytes);
}

LineReader::Result LineReader::next(std::string& line, std::size_t maximumBytes) {
    const std::size_t end = bytes_.find("\r\n", std::max(start_, lookedUntil_));
    if (end != std::string::npos) {
        const std::size_t length = end - start_;
        const bool tooLong = isTruncated_ || length > maximumBytes;
        line = isTruncated_ ? truncated_ : bytes_.substr(start_, std::min(length, maximumBytes));
        start_ = end + 2;
        lookedUntil_ = start_;
        isTruncated_ = false;
        truncated_.clear();
        return tooLong ? Result::Truncated : Result::Line;
    }
    // A CR at the very end may be the first half of the line end.
    lookedUntil_ = bytes_.ends_with('\r') ? bytes_.size() - 1 : bytes_.size();
    if (lookedUntil_ > start_ && lookedUntil_ - start_ > maximumBytes) {
        if (!isTruncated_) {
            truncated_ = bytes_.substr(start_, maximumBytes);
        }
        isTruncated_ = true;
        start_ = lookedUntil_;
    }
    return Result::Incomplete;
}

std::string LineReader::takeRest() {
    std::string rest = bytes_.substr(start_);
    *this = {};
    return rest;
}

} // namespace mailserver
