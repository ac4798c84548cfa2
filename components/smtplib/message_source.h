#pragma once

#include "components/smtplib/wire_text.h"
#include "platform/private_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace smtplib {

/** What a message amounts to on the wire. */
struct MessageTotals {
    /** Line ends counted, doubled dots not. */
    std::int64_t bytes = 0;
    /** There are bytes beyond ASCII. */
    bool eightBit = false;
};

/**
 * Header, body and data file as one stream of text for the wire. It is read twice, first for its size and
 * then to be sent, but for a file that an encoder has just written; and no more than a piece of the file is
 * in memory.
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
     * what it amounts to is then its size.
     */
    void fileIsEncoded() { fileIsEncoded_ = true; }

    /** True when measuring reads a file, which may take its time. */
    bool readsFileToMeasure() const { return file_.has_value() && !fileSizeIsKnown(); }

    /**
     * Reads everything once, but for a file whose size tells enough, and begins again.
     * \throws RuntimeError 57 when the disk fails or the file changes meanwhile.
     */
    MessageTotals measure();

    /**
     * Puts the next piece of the text in place of what the string holds; false when the text has ended.
     * \throws RuntimeError 57 when the disk fails, or when the file has changed since it was opened.
     */
    bool next(std::string& piece);

  private:
    enum class Part { Header, Body, File, End };

    void readFile(std::string& piece);

    /** Not where the body's last line is open: it takes the file's first line. */
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
