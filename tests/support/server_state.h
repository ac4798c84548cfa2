#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace support {

/** Thrown through a conversation to end it: the client has gone, or the test is over. */
struct ConversationEnded {};

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

/** The result of a system call. \throws std::system_error when it is negative. */
int checked(int result, const char* call);

/** How the server ends a connection: with FIN, or with RST. */
enum class Ending { Close, Reset };

/** What a server has learnt of a client that speaks TLS. */
struct TlsSeen {
    bool handshakeDone = false;
    /** The name of the host that the client has asked for (SNI); empty when it has sent none. */
    std::string serverName;
    /** "TLSv1.3"; empty before the end of the handshake. */
    std::string protocol;
    /** The session goes on with the keys of an earlier one. */
    bool resumed = false;
    /** Why the handshake failed, in OpenSSL's words; an alert of the client's is named there. */
    std::string failure;
};

/** What the thread of a scripted server and the test both look at. */
class ServerState {
  public:
    /** No wait of the server's lasts longer: a test that fails must not hang. */
    static constexpr std::chrono::seconds kTimeLimit{20};
    static constexpr std::size_t kAllBytes = std::numeric_limits<std::size_t>::max();

    /** Why a wait of the server's thread ended; the end of the test and the time limit end the conversation.
     */
    enum class Wake { Socket, Released, Pause };

    /** What a connection may still get, and how it ends then. */
    struct Cut {
        std::size_t bytes = kAllBytes;
        Ending ending = Ending::Close;
    };

    ServerState();

    /** Ends every wait, now and later. */
    void stop() const;

    /** Lets one conversation that holds silent go on. */
    void release() const;

    /** Waits for the first client, or for the end: false then. */
    bool waitForClient(int listener) const;

    Wake wait(int socket, short events, bool releasable, std::chrono::milliseconds pause) const;

    void waitForSocket(int socket, short events) const { wait(socket, events, false, kTimeLimit); }

    void setCut(Cut cut);
    Cut cut() const;

    /** Counts a connection and returns its number, from 0. */
    std::size_t countConnection();
    void countEnds();
    void countSent(std::size_t bytes);
    void remember(std::size_t connection, std::string line);
    void rememberTls(std::size_t connection, const TlsSeen& seen);

    std::vector<std::string> commands() const;
    std::vector<std::string> commands(std::size_t connection) const;
    TlsSeen tls(std::size_t connection) const;
    std::size_t connections() const;
    std::size_t connectionsEnded() const;
    std::size_t bytesSent() const;
    bool waitForEndOf(std::size_t connections);
    bool waitForCommands(std::size_t lines);

  private:
    struct Line {
        std::size_t connection = 0;
        std::string text;
    };

    /** Readable once the server is to end. */
    FileDescriptor stop_;
    /** Readable while a release has not been used up. */
    FileDescriptor release_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Cut cut_;
    std::vector<Line> lines_;
    std::map<std::size_t, TlsSeen> tls_;
    std::size_t connections_ = 0;
    std::size_t ended_ = 0;
    std::size_t bytesSent_ = 0;
};

} // namespace support
