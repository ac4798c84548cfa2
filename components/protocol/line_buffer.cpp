#include "components/protocol/line_buffer.h"

#include <algorithm>

namespace protocol {

void LineBuffer::append(std::string_view bytes) {
    // Lines that were given out are removed only here, so that the views of them stay valid until more bytes
    // come.
    if (used_ == bytes_.size() || used_ > bytes_.size() / 2) {
        bytes_.erase(0, used_);
        lookedUntil_ -= std::min(lookedUntil_, used_);
        used_ = 0;
    }
    bytes_.append(bytes);
}

std::optional<std::string_view> LineBuffer::next(bool carriageReturnNeeded, std::size_t mostBytes) {
    if (lineGivenOut_) {
        droppedBytes_ = 0;
        lineGivenOut_ = false;
    }
    const std::string_view all = bytes_;
    std::size_t from = std::max(used_, lookedUntil_);
    for (;;) {
        const std::size_t lineFeed = all.find('\n', from);
        if (lineFeed == std::string_view::npos) {
            dropBehind(mostBytes);
            lookedUntil_ = bytes_.size();
            return std::nullopt;
        }
        const bool carriageReturn = lineFeed > used_ && all[lineFeed - 1] == '\r';
        if (carriageReturn || !carriageReturnNeeded) {
            const std::size_t start = used_;
            used_ = lineFeed + 1;
            lookedUntil_ = used_;
            lineGivenOut_ = true;
            const std::size_t bytes = lineFeed - start - (carriageReturn ? 1 : 0);
            const std::size_t kept = std::min(bytes, mostBytes);
            droppedBytes_ += bytes - kept;
            return all.substr(start, kept);
        }
        from = lineFeed + 1;
    }
}

/** Cuts the incomplete line to `mostBytes`. A CR at its end stays, as it may be half of a CRLF. */
void LineBuffer::dropBehind(std::size_t mostBytes) {
    const std::size_t lineEnd = endsInCarriageReturn() ? 1 : 0;
    if (size() - lineEnd <= mostBytes) {
        return;
    }
    droppedBytes_ += size() - lineEnd - mostBytes;
    bytes_.resize(used_ + mostBytes);
    bytes_.append(lineEnd, '\r');
}

} // namespace protocol
