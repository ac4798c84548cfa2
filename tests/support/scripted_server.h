#pragma once

// A server whose behaviour is written down in the test.
//
//     ScriptedServer server(Script{Send{"+OK ready\r\n"}, ExpectLine{}, Send{"+OK\r\n"}, Close{}});
//     pop.setMailServer(server.address());          // "127.0.0.1:PORT"
//     ...
//     EXPECT_THAT(server.commands(), ElementsAre("USER bob"));
//
// What is played to a connection is a Conversation: any callable that takes the Peer. A Script is one, and so
// is the Pop3Mailbox of pop3_script.h, which answers as a real POP3 server with the messages of the test:
//
//     Pop3Mailbox mailbox({"Subject: a\r\n\r\nbody\r\n"});
//     ScriptedServer server(mailbox);
//
// Several conversations are played to successive connections; the last one serves all that follow.

#include "tests/support/script.h"

#include <QString>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace support {

/** A TCP server on a free port of the loopback interface, in a thread of its own. */
class ScriptedServer {
  public:
    /** Plays the conversation to every connection. */
    explicit ScriptedServer(Conversation conversation);

    /** Plays one conversation to each successive connection, the last one to all that follow. */
    explicit ScriptedServer(std::vector<Conversation> conversations);

    /** Ends at once, whatever is being played. */
    ~ScriptedServer();

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t port() const noexcept { return port_; }

    /** "127.0.0.1:PORT", as a server's name is typed. */
    QString address() const;

    /**
     * From the next byte on, no connection gets more than so many bytes; then it is ended. Bytes of TLS count
     * as the text that they stand for, those of the handshake not at all.
     */
    void cutAfter(std::size_t bytes, Ending ending = Ending::Close) { state_.setCut({bytes, ending}); }

    /** Connections get all bytes again. */
    void cutNoMore() { cutAfter(ServerState::kAllBytes); }

    /** Lets a conversation that holds silent go on. */
    void release() { state_.release(); }

    /** All lines that clients have sent so far, without line ends, of all connections in order. */
    std::vector<std::string> commands() const { return state_.commands(); }

    /** The lines of one connection; 0 is the first one. */
    std::vector<std::string> commands(std::size_t connection) const { return state_.commands(connection); }

    /** The commands of commands(), each without its arguments. */
    std::vector<std::string> keywords() const;

    /** What is known of a connection's TLS, also when the handshake has failed. */
    TlsSeen tls(std::size_t connection) const { return state_.tls(connection); }

    /** Connections accepted so far. */
    std::size_t connections() const { return state_.connections(); }

    /** Of these, the ones that have ended. */
    std::size_t connectionsEnded() const { return state_.connectionsEnded(); }

    /** Bytes sent so far, over all connections; counted as by cutAfter. */
    std::size_t bytesSent() const { return state_.bytesSent(); }

    /** Waits until so many connections have come and ended; false after the time limit. */
    bool waitForEndOf(std::size_t connections) { return state_.waitForEndOf(connections); }

    /** Waits until so many lines have come; false after the time limit. */
    bool waitForCommands(std::size_t lines) { return state_.waitForCommands(lines); }

    /** No wait of the server's lasts longer: a test that fails must not hang. */
    static constexpr std::chrono::seconds kTimeLimit = ServerState::kTimeLimit;

  private:
    void run();
    void play(int socket);

    std::vector<Conversation> conversations_;
    ServerState state_;
    FileDescriptor listener_;
    std::uint16_t port_ = 0;

    /** Last, so that it sees all of the above complete and ends before any of it goes. */
    std::jthread thread_;
};

/** A loopback port that is taken, so that nobody else listens there, and refuses every connection. */
class RefusingPort {
  public:
    RefusingPort();

    std::uint16_t port() const noexcept { return port_; }

    QString address() const;

  private:
    FileDescriptor socket_;
    std::uint16_t port_ = 0;
};

} // namespace support
