#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mailserver {

/**
 * Bytes from a client, given out line by line. Only CR LF ends a line (RFC 5321 section 2.3.8): were a lone
 * LF to do so, two servers could disagree about where a message ends.
 */
class LineReader {
  public:
    enum class Result {
        Line,      ///< A whole line was taken.
        Truncated, ///< A line was taken that had been too long; only its start is there.
        Incomplete ///< The end of the line has not come yet.
    };

    void append(std::string_view bytes);

    /** Takes the next line without its end; what a line has beyond `maximumBytes` is dropped. */
    Result next(std::string& line, std::size_t maximumBytes);

    /** What has come behind the last line, which is not to be read as lines. */
    std::string takeRest();

  private:
    std::string bytes_;
    /** Where the next line starts. */
    std::size_t start_ = 0;
    /** No line end lies before this position. */
    std::size_t lookedUntil_ = 0;
    /** The start of a line that is too long; the rest is thrown away as it comes. */
    std::string truncated_;
    bool isTruncated_ = false;
};

} // namespace mailserver
