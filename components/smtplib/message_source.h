#pragma once

#include "components/smtplib/wire_text.h"
#include "platform/private_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace smtplib {

/** What MAIL announces of a message: its bytes on the wire, and whether it needs 8BITMIME. */
struct MessageTotals {
    /** Line ends counted, doubled dots not. */
    std::int64_t bytes = 0;
    /** There are bytes beyond ASCII. */
    bool eightBit = false;
};

/**
 * Header, body and data file as one stream of text for the wire. It is read twice, once to be measured and
 * once to be sent; a file that an encoder has just written is read only once (fileIsEncoded()). No more than
 * a piece of the file is in memory.
 *
 *     MessageSource source(header, body, platform::RegularInput(path));
 *     const MessageTotals totals = source.measure();
 *     for (std::string piece; source.next(piece); ) { ... }
 */
class MessageSource {
  public:
    /** Bytes of the file that one piece is made of. */
    static constexpr std::size_t kPieceBytes = 64U << 10U;

    /** The file, when there is one, has not been read yet. Header and body must outlive the source. */
    MessageSource(std::string_view header, std::string_view body,
                  std::optional<platform::RegularInput> dataFile);

    /**
     * Says that the file holds nothing but short lines of ASCII that end in CR LF, as an encoder writes them:
     * its bytes on the wire are then its size on the disk.
     */
    void fileIsEncoded() { fileIsEncoded_ = true; }

    /** True when measure() reads a file, which may take long. */
    bool readsFileToMeasure() const { return file_.has_value() && !fileSizeIsKnown(); }

    /**
     * Reads everything once, except a file whose size on the disk is enough, and goes back to the start.
     * \throws RuntimeError 57 when the disk fails or the file changes meanwhile.
     */
    MessageTotals measure();

    /**
     * Replaces the string with the next piece of the text; false at the end of the text.
     * \throws RuntimeError 57 when the disk fails, or when the file has changed since it was opened.
     */
    bool next(std::string& piece);

  private:
    enum class Part { Header, Body, File, End };

    void readFile(std::string& piece);

    /** False when the body's last line has no line end: the file's first line then continues it. */
    bool fileSizeIsKnown() const { return file_ && fileIsEncoded_ && body_.ends_with("\r\n"); }

    std::string_view header_;
    std::string_view body_;
    std::optional<platform::RegularInput> file_;
    Part part_ = Part::Header;
    std::size_t bodyUsed_ = 0;
    bool fileIsEncoded_ = false;
    WireText wire_;
    std::string buffer_;
};

} // namespace smtplib
