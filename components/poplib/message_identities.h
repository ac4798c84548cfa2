#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace poplib {

/** What identifies a message when its number may name another one. */
struct MessageIdentity {
    /** Bytes, from the reply to LIST, without the server's notes; nothing when there was no reply. */
    std::optional<std::int64_t> size;
    /** MessageDigest of the header and the first body lines; empty when these did not come completely. */
    std::string digest;
    /** The server's unique-id (RFC 1939 section 7); empty when none is known. */
    std::string uniqueId;
};

/** Which message each number named when it was listed, kept up to date with the client's own deletions. */
class MessageIdentities {
  public:
    void remember(std::int32_t number, MessageIdentity identity);

    /**
     * Adds the unique-id to a remembered message; does nothing for other numbers. An id that is just the
     * message number is ignored: it identifies nothing, and would be wrong after the first deletion.
     */
    void setUniqueId(std::int32_t number, std::string_view uniqueId);

    /** nullptr for a number that was never listed. */
    const MessageIdentity* of(std::int32_t number) const;

    /**
     * The numbers of all messages of the same size and digest, the message itself included. Unique-ids are
     * not compared: since the listing the server may have given the id of a deleted message to another one.
     */
    std::vector<std::int32_t> alike(std::int32_t number) const;

    /** Whether the unique-id is known, and no other message has the same one. */
    bool uniqueIdTells(std::int32_t number) const;

    /**
     * Forgets the message, which has been deleted; the number of each later message becomes smaller by one.
     */
    void remove(std::int32_t number);

  private:
    struct Entry {
        bool known = false;
        MessageIdentity identity;
    };

    std::vector<Entry> entries_;
};

} // namespace poplib
