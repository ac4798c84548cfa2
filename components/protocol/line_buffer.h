#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace protocol {

/**
 * Bytes from the server, given out line by line. The buffer remembers how far it has looked, so that a line
 * that comes byte by byte costs no more than one that comes whole.
 */
class LineBuffer {
  public:
    void append(std::string_view bytes);

    /** The next line that ends in CR LF or in LF alone, without its end; nothing while none is complete. */
    std::optional<std::string_view> nextReplyLine() { return next(false, kAllBytes); }

    /**
     * The next line that ends in CR LF; a lone LF or CR belongs to the line. Of a longer line only the first
     * `mostBytes` bytes (at least 1) are kept, even while the rest is still arriving.
     */
    std::optional<std::string_view> nextResponseLine(std::size_t mostBytes = kAllBytes) {
        return next(true, mostBytes);
    }

    /** How many bytes were dropped of the line given out last, or of the line that is still arriving. */
    std::size_t droppedBytes() const noexcept { return droppedBytes_; }

    /** True when the bytes that have not been given out end in CR. */
    bool endsInCarriageReturn() const noexcept { return size() > 0 && bytes_.back() == '\r'; }

    /** Bytes that have not been given out. */
    std::size_t size() const noexcept { return bytes_.size() - used_; }

  private:
    static constexpr std::size_t kAllBytes = std::string_view::npos;

    std::optional<std::string_view> next(bool carriageReturnNeeded, std::size_t mostBytes);
    void dropBehind(std::size_t mostBytes);

    std::string bytes_;
    /** Where the next line starts. */
    std::size_t used_ = 0;
    /** No line end that counts lies before this position. */
    std::size_t lookedUntil_ = 0;
    std::size_t droppedBytes_ = 0;
    /** droppedBytes_ belongs to the line given out last, not to the one that is arriving. */
    bool lineGivenOut_ = false;
};

} // namespace protocol
