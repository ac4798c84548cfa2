#pragma once

#include "components/protocol/line_buffer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/** One reply of the server (RFC 5321 section 4.2). */
struct Reply {
    int code = 0;
    /** What stands behind the code in each line; may be empty, and may hold any byte but LF. */
    std::vector<std::string> lines;

    /** The first digit: it tells what a reply means whose code is not known (RFC 5321 section 4.2.1). */
    int kind() const noexcept { return code / 100; }

    /** True when the server ends the session, whatever was asked (RFC 5321 section 3.8). */
    bool endsService() const noexcept { return code == 421; }
};

/** The extensions that a server has announced in its reply to EHLO. */
struct Extensions {
    /** SIZE: MAIL may announce the size of a message (RFC 1870). */
    bool size = false;
    /** Bytes of the largest message that the server takes; 0 when it names no limit. */
    std::int64_t sizeLimit = 0;
    /** 8BITMIME: MAIL may announce bytes beyond ASCII (RFC 6152). */
    bool eightBit = false;
    /** SMTPUTF8: addresses and header fields may have characters beyond ASCII (RFC 6531). */
    bool smtpUtf8 = false;
    /** PIPELINING: commands may be sent ahead of the replies to others (RFC 2920). */
    bool pipelining = false;
    /** STARTTLS: the connection can be encrypted (RFC 3207). */
    bool startTls = false;
    /** AUTH: the names of the mechanisms to log on with, in capitals (RFC 4954). */
    std::vector<std::string> mechanisms;

    bool offers(std::string_view mechanism) const;
};

/**
 * Reads the extensions from a reply to EHLO. Keywords may be in any case; a limit that is not a number is
 * ignored.
 */
Extensions extensionsOf(const Reply& reply);

/** Makes replies of the server's bytes. A line may end in LF alone. */
class ReplyReader {
  public:
    /**
     * Longest line, in bytes, without its end. RFC 5321 section 4.5.3.1.5 allows 512; some servers send
     * longer ones.
     */
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
