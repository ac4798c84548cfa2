#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NetCodeLib {

/**
 * Drops header lines that stand before encoded text.
 *
 * An attachment's file begins with whatever header lines of its part nobody has removed: mail programs write
 * more of them than the well-known ones, such as "Content-ID: <...>", in any order. Their letters would be
 * decoded into the file's first bytes. A line of encoded text never has the colon that a field's name ends
 * with, so the lines can be told apart without knowing their names (RFC 5322 section 2.2).
 */
class LeadingFields {
  public:
    /**
     * Longest line, in bytes, that is taken for a header line; a longer one is encoded text. Mail should have
     * no lines of more than 998 (RFC 5322 section 2.1.1), but it does.
     */
    static constexpr std::size_t kMaximumLineBytes = 65'536;

    /**
     * The encoded text of this piece: nothing while header lines last, then everything. The view is valid
     * until the next call.
     */
    std::string_view take(std::string_view piece);

    /** The encoded text that was held back, when no piece is left. */
    std::string_view takeLast();

  private:
    bool isHeaderLine(std::string_view line);

    std::string held_;
    bool fieldSeen_ = false;
    bool passed_ = false;
};

} // namespace NetCodeLib
