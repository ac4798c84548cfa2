#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace netcodelib {

/**
 * Drops what is left of a part's header before its encoded text.
 *
 * An attachment's file begins with the empty line that ended the part's header, or with lines of that header
 * that were not removed before: fields such as "Content-ID: <...>", and lines that continue a field, such as
 * " size=35648;". Their letters would be decoded into the file's first bytes.
 *
 * A text therefore begins with a header when its first line is a field (RFC 5322 section 2.2) or begins with
 * white space (section 2.2.3). The header ends at the first empty line, which is kept. Any other text is
 * encoded text from its start, even when a later line looks like a field.
 */
class LeadingFields {
  public:
    /**
     * Longest line, in bytes, that is taken for a header line; a longer one is encoded text. Mail must not
     * have lines of more than 998 characters (RFC 5322 section 2.1.1), but some has.
     */
    static constexpr std::size_t kMaximumLineBytes = 65'536;

    /**
     * Returns the encoded text of this piece: nothing while header lines last, then everything. The view is
     * valid until the next call.
     * \throws RuntimeError 20502 when a line of the header is no header line.
     */
    std::string_view take(std::string_view piece);

    /**
     * Returns the encoded text that is still held back. Call it after the last piece.
     * \throws RuntimeError 20502 when no empty line ends the header.
     */
    std::string_view takeLast();

  private:
    void takeLine(std::string_view line);

    std::string held_;
    bool fieldSeen_ = false;
    bool passed_ = false;
};

} // namespace netcodelib
