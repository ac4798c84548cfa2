#pragma once

#include "components/protocol/line_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/** One answer of the server (RFC 5321 section 4.2). */
struct Reply {
    int code = 0;
    /** What stands behind the code in each line; may be empty, and may hold any byte but LF. */
    std::vector<std::string> lines;

    /** The first digit decides what an answer means when its code is not known. */
    int kind() const noexcept { return code / 100; }

    /** True when the server ends the session, whatever was asked (RFC 5321 section 3.8). */
    bool endsService() const noexcept { return code == 421; }
};

/** What a server can do, as its answer to EHLO tells. */
struct Extensions {
    /** SIZE: the size of a message may be told beforehand (RFC 1870). */
    bool size = false;
    /** Bytes of the largest message that the server takes; 0 when it names no limit. */
    std::int64_t sizeLimit = 0;
    /** 8BITMIME: bytes beyond ASCII may be announced (RFC 6152). */
    bool eightBit = false;
};

/** Keywords count in any case; a limit that is no number counts for nothing. */
Extensions extensionsOf(const Reply& reply);

/** Makes replies of the server's bytes. A line may end in LF alone. */
class ReplyReader {
  public:
    /** Longest line, in bytes, without its end. RFC 5321 section 4.5.3.1.5 has 512; some servers like to
     * talk. */
    static constexpr std::size_t kMaximumLineBytes = 4096;
    /** Most lines of one reply. */
    static constexpr std::size_t kMaximumLines = 256;

    void receive(std::string_view bytes) { input_.append(bytes); }

    /** Returns the next reply; nothing when more bytes are needed, or when the bytes are broken. */
    std::optional<Reply> next();

    /** True once the bytes cannot be a reply, or are more than any reply has. */
    bool isBroken() const noexcept { return broken_; }

    /** True when there are bytes that have not become a reply. */
    bool hasBytes() const noexcept { return input_.size() > 0 || !reply_.lines.empty(); }

  private:
    /** Adds the line to the reply; true when it was the last one. */
    bool takeLine(std::string_view line);

    protocol::LineBuffer input_;
    Reply reply_;
    bool broken_ = false;
};

} // namespace smtplib
