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

#include <QString>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace support {

class ScriptedServer;

/** Closes what it holds. */
class FileDescriptor {
  public:
    explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}

    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const noexcept { return descriptor_; }

  private:
    int descriptor_;
};

/** How the server ends a connection: with FIN, or with RST. */
enum class Ending { Close, Reset };

/** The client, as a conversation sees it. Every call ends the conversation when the client has gone. */
class Peer {
  public:
    Peer(ScriptedServer& server, int socket, std::size_t connection);

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

  private:
    friend class ScriptedServer;

    void sendAtOnce(std::string_view bytes);
    bool readSome();
    void rememberLinesLeft();

    ScriptedServer& server_;
    int socket_;
    std::size_t connection_;
    std::size_t sentHere_ = 0;
    std::string input_;
};

using Conversation = std::function<void(Peer&)>;

/** Says nothing until the test calls release(), and then this. */
Conversation holdAndSay(std::string bytes);

/** Sends the bytes, in pieces of so many bytes; 0 means at once. */
struct Send {
    std::string bytes;
    std::size_t pieceBytes = 0;
};

/** Waits for one line from the client. */
struct ExpectLine {};

struct Close {};

struct Reset {};

/** Says nothing until release() or until the client has gone. */
struct HoldSilent {};

/** Sends one byte at a time with a pause behind each. */
struct Trickle {
    std::string bytes;
    std::chrono::milliseconds pause{1};
};

/** Sends what the callable gives, until it gives nothing: for answers that nobody wants to hold in memory. */
struct Stream {
    std::function<std::string()> next;
};

using Step = std::variant<Send, ExpectLine, Close, Reset, HoldSilent, Trickle, Stream>;

/** The steps of one connection, in order. After the last one the connection is closed. */
class Script {
  public:
    Script(std::initializer_list<Step> steps) : steps_(steps) {}

    explicit Script(std::vector<Step> steps) : steps_(std::move(steps)) {}

    void operator()(Peer& peer) const;

  private:
    std::vector<Step> steps_;
};

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

    /** From the next byte on, no connection gets more than so many bytes; then it is ended. */
    void cutAfter(std::size_t bytes, Ending ending = Ending::Close);

    /** Connections get all bytes again. */
    void cutNoMore() { cutAfter(kAllBytes); }

    /** Lets a conversation that holds silent go on. */
    void release();

    /** All lines that clients have sent so far, without line ends, of all connections in order. */
    std::vector<std::string> commands() const;

    /** The lines of one connection; 0 is the first one. */
    std::vector<std::string> commands(std::size_t connection) const;

    /** The commands of commands(), each without its arguments. */
    std::vector<std::string> keywords() const;

    /** Connections accepted so far. */
    std::size_t connections() const;

    /** Of these, the ones that have ended. */
    std::size_t connectionsEnded() const;

    /** Bytes sent so far, over all connections. */
    std::size_t bytesSent() const;

    /** Waits until so many connections have come and ended; false after the time limit. */
    bool waitForEndOf(std::size_t connections);

    /** Waits until so many lines have come; false after the time limit. */
    bool waitForCommands(std::size_t lines);

    /** No wait of the server's lasts longer: a test that fails must not hang. */
    static constexpr std::chrono::seconds kTimeLimit{20};

  private:
    friend class Peer;

    static constexpr std::size_t kAllBytes = std::numeric_limits<std::size_t>::max();

    struct Line {
        std::size_t connection = 0;
        std::string text;
    };

    /** Why a wait of the server's thread ended; the end of the test and the time limit end the conversation.
     */
    enum class Wake { Socket, Released, Pause };

    void run();
    void play(int socket, std::size_t connection);
    Wake wait(int socket, short events, bool releasable, std::chrono::milliseconds pause) const;

    void waitForSocket(int socket, short events) const { wait(socket, events, false, kTimeLimit); }

    std::size_t bytesAllowed() const;
    void remember(std::size_t connection, std::string line);
    void countSent(std::size_t bytes);

    std::vector<Conversation> conversations_;
    FileDescriptor listener_;
    /** Readable once the server is to end. */
    FileDescriptor stop_;
    /** Readable while a release has not been used up. */
    FileDescriptor release_;
    std::uint16_t port_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t byteLimit_ = kAllBytes;
    Ending ending_ = Ending::Close;
    std::vector<Line> lines_;
    std::size_t connections_ = 0;
    std::size_t ended_ = 0;
    std::size_t bytesSent_ = 0;

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
