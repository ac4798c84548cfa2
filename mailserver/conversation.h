#pragma once

#include <string>
#include <string_view>

namespace mailserver {

/**
 * The server's side of one connection without any network: the client's bytes go in, the server's come out.
 * How the network has cut the bytes into pieces changes nothing.
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
};

} // namespace mailserver
