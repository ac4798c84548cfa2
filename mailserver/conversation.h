#pragma once

#include <string>
#include <string_view>

namespace mailserver {

/**
 * The server's side of one connection without any network: the client's bytes go in, the server's come out.
 * How the network has cut the bytes into pieces changes nothing.
 *
 * Nor does it know how to encrypt. Whoever carries the bytes looks at wantsEncryption() behind every answer,
 * and where that is so, sends the answer, begins TLS, calls encrypted() and goes on. Where TLS comes from the
 * first byte on, encrypted() is called before the greeting.
 */
class Conversation {
  public:
    Conversation() = default;
    virtual ~Conversation() = default;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /** What the server says first. */
    virtual std::string greeting() const = 0;

    /** Takes bytes from the client and returns the answers to every command that they complete. */
    virtual std::string receive(std::string_view bytes) = 0;

    /** True once the connection is to be closed, after the last answer has been sent. */
    virtual bool isOver() const = 0;

    /**
     * True from the answer that invites the client to begin TLS to encrypted(). What has come in clear behind
     * the invitation, or still comes, is thrown away (RFC 3207 section 5).
     */
    virtual bool wantsEncryption() const { return false; }

    /** TLS has begun: what the client has said before is forgotten. */
    virtual void encrypted() {}
};

/** How far a conversation is on its way to encryption. */
enum class Encryption { None, Invited, Begun };

} // namespace mailserver
