#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace standard {

/**
 * Turns text of one charset into UTF-8, in pieces of any size. What the charset does not have becomes
 * U+FFFD.
 *
 * Text without a charset, of US-ASCII and of a charset that nobody knows is read as all bytes of the program
 * are: as UTF-8 where it is valid, otherwise as Windows-1252. So is text that is called UTF-8 and has no
 * valid character beyond ASCII. ISO 8859-1 stands for Windows-1252, and other names for the larger sets that
 * mail programs mean by them.
 */
class CharsetDecoder {
  public:
    /** \param charset A name as IANA has it, in any case; any bytes. */
    explicit CharsetDecoder(std::string_view charset);

    ~CharsetDecoder();
    CharsetDecoder(const CharsetDecoder&) = delete;
    CharsetDecoder& operator=(const CharsetDecoder&) = delete;

    /** Adds the text of these bytes. Whatever is in `text` before the first call stays as it is. */
    void append(std::string_view bytes, std::string& text);

    /** Adds what the last bytes have left, and settles what only the whole text tells. Call it once. */
    void finish(std::string& text);

  private:
    class Conversion;

    /** Null when the bytes are collected as they are and looked at in the end. */
    std::unique_ptr<Conversion> conversion_;
    /** Whether the charset is called UTF-8, so that what is not valid may be a fault in the text. */
    bool isUtf8_ = false;
    /** Where the collected bytes begin in the text. */
    std::size_t start_ = std::string::npos;
};

/** A whole text as UTF-8. */
std::string toUtf8(std::string_view bytes, std::string_view charset = {});

} // namespace standard
