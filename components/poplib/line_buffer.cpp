#include "components/poplib/line_buffer.h"

#include <algorithm>

namespace POPLib {

void LineBuffer::append(std::string_view bytes) {
    // Given-out lines are dropped only here: the views handed out before stay valid until more bytes come.
    if (used_ == bytes_.size() || used_ > bytes_.size() / 2) {
        bytes_.erase(0, used_);
        lookedUntil_ -= std::min(lookedUntil_, used_);
        used_ = 0;
    }
    bytes_.append(bytes);
}

std::optional<std::string_view> LineBuffer::next(bool carriageReturnNeeded) {
    const std::string_view all = bytes_;
    std::size_t from = std::max(used_, lookedUntil_);
    for (;;) {
        const std::size_t lineFeed = all.find('\n', from);
        if (lineFeed == std::string_view::npos) {
            lookedUntil_ = all.size();
            return std::nullopt;
        }
        const bool carriageReturn = lineFeed > used_ && all[lineFeed - 1] == '\r';
        if (carriageReturn || !carriageReturnNeeded) {
            const std::size_t start = used_;
            used_ = lineFeed + 1;
            lookedUntil_ = used_;
            return all.substr(start, lineFeed - start - (carriageReturn ? 1 : 0));
        }
        from = lineFeed + 1;
    }
}

} // namespace POPLib
