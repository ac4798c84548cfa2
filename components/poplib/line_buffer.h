#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace POPLib {

/**
 * Bytes from the server, given out line by line. It remembers how far it has looked, so that a line that
 * comes byte by byte costs no more than one that comes whole.
 */
class LineBuffer {
  public:
    void append(std::string_view bytes);

    /** The next line that ends in CR LF or in LF alone, without its end; nothing while none is complete. */
    std::optional<std::string_view> nextReplyLine() { return next(false); }

    /** The next line that ends in CR LF; a lone LF or CR belongs to the line. */
    std::optional<std::string_view> nextContentLine() { return next(true); }

    /** True when the bytes that have not been given out end in CR. */
    bool endsInCarriageReturn() const noexcept { return size() > 0 && bytes_.back() == '\r'; }

    /** Bytes that have not been given out. */
    std::size_t size() const noexcept { return bytes_.size() - used_; }

  private:
    std::optional<std::string_view> next(bool carriageReturnNeeded);

    std::string bytes_;
    /** Where the next line starts. */
    std::size_t used_ = 0;
    /** No line end that counts lies before this position. */
    std::size_t lookedUntil_ = 0;
};

} // namespace POPLib
