#pragma once

#include "components/poplib/pop3_session.h"

#include <QCryptographicHash>

#include <cstdint>
#include <string>
#include <string_view>

namespace poplib {

/**
 * A digest of a message's header and first body lines, in the order in which they come. It is a cryptographic
 * hash, not a checksum: a sender must not be able to make two messages with the same digest.
 *
 * Some servers keep notes in header lines of their own, "Status: O" for one, and change them whenever a
 * message has been listed or fetched. These lines are not in the digest.
 */
class MessageDigest {
  public:
    /** Adds a header or body line; other events add nothing. */
    void add(const Event& event);

    std::string result();

    /** Bytes of the server's notes in the lines added so far, line ends counted: what the size has of them.
     */
    std::int64_t bytesOfNotes() const noexcept { return bytesOfNotes_; }

  private:
    bool isNote(const HeaderLine& header);

    void add(std::string_view text) { gathered_.append(text); }

    void digestGathered();

    /**
     * Lines that are not in the hash yet. Hashing a few long texts is faster than hashing many short ones.
     */
    std::string gathered_;
    QCryptographicHash hash_{QCryptographicHash::Blake2b_256};
    bool inBody_ = false;
    /** The last header line was a note, and folded lines behind it belong to it. */
    bool inNote_ = false;
    std::int64_t bytesOfNotes_ = 0;
};

} // namespace poplib
