#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace mailserver {

/**
 * The text of a message on its way in: lines up to the one that is a dot alone (RFC 5321 section 4.1.1.4). It
 * is kept as it comes, doubled dots too, and looked at once.
 */
class IncomingText {
  public:
    /** Longest line, in bytes. RFC 5321 section 4.5.3.1.6 has 1000; this takes what comes. */
    static constexpr std::size_t kMaximumLineBytes = 1U << 20U;

    /** A text of more bytes, doubled dots counted once, is heard to its end but not kept. */
    explicit IncomingText(std::size_t maximumBytes = 0) : maximumBytes_(maximumBytes) {}

    /** Makes room for so many bytes, which the client has announced. */
    void expect(std::size_t bytes) { text_.reserve(bytes); }

    /** Takes what belongs to the text and returns what follows the end of it. */
    std::string_view take(std::string_view bytes);

    /** True once the final dot has come. */
    bool isComplete() const noexcept { return isComplete_; }

    /** True when the text, or a line of it, is longer than what is kept. */
    bool isTooLarge() const noexcept { return isTooLarge_; }

    /** The lines before the final dot, as they came; nothing when they are too large. */
    std::string takeLines() { return std::move(text_); }

  private:
    void forgetLines();

    std::size_t maximumBytes_;
    std::string text_;
    std::size_t lineStart_ = 0;
    /** No line end lies before this position. */
    std::size_t lookedUntil_ = 0;
    std::size_t size_ = 0;
    bool isComplete_ = false;
    bool isTooLarge_ = false;
};

/** The lines with every doubled dot at a line's start made single (RFC 5321 section 4.5.2). */
std::string withoutDoubledDots(std::string_view lines);

} // namespace mailserver
