#pragma once

#include "components/poplib/pop3_session.h"

#include <QCryptographicHash>

#include <string>
#include <string_view>

namespace poplib {

/**
 * A digest of a message's header and first body lines, in the order in which they come. It is a cryptographic
 * hash, not a checksum: a sender must not be able to make two messages with the same digest.
 */
class MessageDigest {
  public:
    /** Adds a header or body line; other events add nothing. */
    void add(const Event& event);

    std::string result();

  private:
    void add(std::string_view text) { gathered_.append(text); }

    void digestGathered();

    /**
     * Lines that are not in the hash yet. Hashing a few long texts is faster than hashing many short ones.
     */
    std::string gathered_;
    QCryptographicHash hash_{QCryptographicHash::Blake2b_256};
    bool inBody_ = false;
};

} // namespace poplib
