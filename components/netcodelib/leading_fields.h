#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace netcodelib {

/**
 * Drops what is left of a part's header before its encoded text.
 *
 * An attachment's file begins with the empty line that ended the part's header, or with what nobody has
 * removed of that header: fields such as "Content-ID: <...>", and lines that continue a field, such as
 * " size=35648;". Their letters would be decoded into the file's first bytes.
 *
 * So a text whose first line is a field (RFC 5322 section 2.2) or begins with white space (section 2.2.3)
 * begins with a header, which ends at the first empty line; that line stays. Any other text is encoded text
 * from its start: behind the empty line a colon makes no header.
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
     * \throws RuntimeError 20502 for a header with a line that is none.
     */
    std::string_view take(std::string_view piece);

    /**
     * The encoded text that was held back, when no piece is left.
     * \throws RuntimeError 20502 for a header without an empty line behind it.
     */
    std::string_view takeLast();

  private:
    void takeLine(std::string_view line);

    std::string held_;
    bool fieldSeen_ = false;
    bool passed_ = false;
};

} // namespace netcodelib
