#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace poplib {

/** What is known of a message, to know it again when its number may name another one. */
struct MessageIdentity {
    /** Bytes, as the server told them; nothing when it did not. */
    std::optional<std::int32_t> size;
    /** Of the header and the first body lines, see MessageDigest; empty when the server did not give them. */
    std::string digest;
    /** The server's unique-id (RFC 1939 section 7); empty when it offers none. */
    std::string uniqueId;
};

/** What the numbers of the messages named when they were listed, and what they name since. */
class MessageIdentities {
  public:
    void remember(std::int32_t number, MessageIdentity identity);

    /**
     * Adds the unique-id to what is remembered; nothing for a number that is not. An id that is just the
     * number says nothing, and would go wrong with the first deletion; it is as good as none.
     */
    void setUniqueId(std::int32_t number, std::string_view uniqueId);

    /** nullptr for a number that was never listed. */
    const MessageIdentity* of(std::int32_t number) const;

    /**
     * The numbers of all messages of the same size and digest, the message itself included. Unique-ids do not
     * tell them apart: the server may have given a freed id to another message since.
     */
    std::vector<std::int32_t> alike(std::int32_t number) const;

    /** Whether the unique-id is known, and no other message has the same one. */
    bool uniqueIdTells(std::int32_t number) const;

    /** The message is gone; those behind it have moved up by one. */
    void remove(std::int32_t number);

  private:
    struct Entry {
        bool known = false;
        MessageIdentity identity;
    };

    std::vector<Entry> entries_;
};

} // namespace poplib
