#pragma once

#include <QCryptographicHash>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace POPLib {

/** What is known of a message, to know it again when its number may name another one. */
struct MessageIdentity {
    /** Bytes, as the server told them. */
    std::int32_t size = 0;
    /** Of all header lines, see HeaderDigest. */
    std::string headerDigest;
    /** The server's unique-id (RFC 1939 section 7); empty when it offers none. */
    std::string uniqueId;
};

/** What the numbers of the messages named when they were listed, and what they name since. */
class MessageIdentities {
  public:
    void remember(std::int32_t number, MessageIdentity identity);

    /** Adds the unique-id to what is remembered; nothing for a number that is not. */
    void setUniqueId(std::int32_t number, std::string_view uniqueId);

    /** nullptr for a number that was never listed. */
    const MessageIdentity* of(std::int32_t number) const;

    /**
     * The numbers that cannot be told from this one, itself included: a server may give identical copies one
     * unique-id. They are told apart by their unique-ids where these are known and asked for, otherwise by
     * size and header.
     */
    std::vector<std::int32_t> indistinguishable(std::int32_t number, bool byUniqueId) const;

    /** The message is gone; those behind it have moved up by one. */
    void remove(std::int32_t number);

  private:
    struct Entry {
        bool known = false;
        MessageIdentity identity;
    };

    std::vector<Entry> entries_;
};

/** A digest of header lines, in the order in which they come. */
class HeaderDigest {
  public:
    void add(std::string_view field, std::string_view value);

    std::string result() const;

  private:
    QCryptographicHash hash_{QCryptographicHash::Sha256};
};

} // namespace POPLib
