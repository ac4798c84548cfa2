#pragma once

#include "tests/support/server_state.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace support {

/** The client, as a conversation sees it. Every call ends the conversation when the client has gone. */
class Peer {
  public:
    Peer(ServerState& server, int socket, std::size_t connection);

    /** Sends all bytes, in pieces of so many bytes; 0 means at once. */
    void send(std::string_view bytes, std::size_t pieceBytes = 0);

    /** Sends one byte at a time with a pause behind each. */
    void trickle(std::string_view bytes, std::chrono::milliseconds pause);

    /** Waits for a line of the client's, remembers it for commands(), and returns it without its line end. */
    std::string readLine();

    /** Says nothing until the test calls release() or the client has gone. */
    void holdSilent();

    /** Ends the connection, and with it the conversation. */
    [[noreturn]] void close();
    [[noreturn]] void reset();

    /** 0 for the server's first connection. */
    std::size_t connection() const noexcept { return connection_; }

    /** Remembers what has come and nobody has read. */
    void rememberLinesLeft();

  private:
    void sendAtOnce(std::string_view bytes);
    bool readSome();

    ServerState& server_;
    int socket_;
    std::size_t connection_;
    std::size_t sentHere_ = 0;
    std::string input_;
};

using Conversation = std::function<void(Peer&)>;

/** Says nothing until the test calls release(), and then this. */
Conversation holdAndSay(std::string bytes);

} // namespace support
