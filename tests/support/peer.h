#pragma once

#include "tests/support/server_state.h"
#include "tests/support/tls_identity.h"
#include "tests/support/tls_layer.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
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

    /**
     * The same for a server of old, which does not know CAPA: that is refused, the next line is waited for,
     * and commands() and the bytes counted know nothing of it.
     */
    std::string readCommandOfOld();

    /** Waits until the client has sent something that nobody has read. */
    void awaitBytes();

    /**
     * Speaks TLS from here on. Whatever the client has sent and nobody has read counts as the start of its
     * handshake. A handshake that fails ends the conversation.
     */
    void beginTls(const TlsIdentity& identity);

    /** Sends the bytes as they are, also in the middle of TLS. */
    void sendInClear(std::string_view bytes);

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
    std::string takeLine();
    void sendAtOnce(std::string_view bytes);
    void sendEncrypted(std::string_view text);
    std::size_t sendPart(std::string_view bytes);
    void sendFlight(std::string_view bytes, std::size_t flight);
    void countSent(std::size_t bytes);
    std::optional<std::string> receive();
    bool readSome();

    ServerState& server_;
    int socket_;
    std::size_t connection_;
    std::size_t sentHere_ = 0;
    std::string input_;
    /** Nothing while the connection is in clear. */
    std::unique_ptr<TlsLayer> tls_;
    /** The handshake is over and has not succeeded: what still comes is nothing. */
    bool handshakeFailed_ = false;
};

using Conversation = std::function<void(Peer&)>;

/** Says nothing until the test calls release(), and then this. */
Conversation holdAndSay(std::string bytes);

/** The conversation with TLS from the first byte on. */
Conversation overTls(TlsIdentity identity, Conversation conversation);

} // namespace support
