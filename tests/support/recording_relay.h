#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace support {

/**
 * Stands between a client and a real server, hands on all bytes as they come, and remembers them: what
 * somebody on the way would have.
 */
class RecordingRelay {
  public:
    /** \param server "127.0.0.1:port", as the servers' address() has it. */
    explicit RecordingRelay(const QString& server);

    /** Ends all connections. */
    ~RecordingRelay();

    RecordingRelay(const RecordingRelay&) = delete;
    RecordingRelay& operator=(const RecordingRelay&) = delete;

    /** "127.0.0.1:port", for the client. */
    QString address() const;

    /** How many connections clients have made. */
    std::size_t connections() const;

    /** All bytes that clients have sent so far, of all connections. */
    std::string clientBytes() const;

    /** All bytes that the server has sent so far. */
    std::string serverBytes() const;

  private:
    void serve();
    void relay(int from, int to, std::string& record);
    int connectToServer() const;

    std::string serverHost_;
    std::uint16_t serverPort_ = 0;
    int listener_ = -1;
    std::uint16_t port_ = 0;

    mutable std::mutex mutex_;
    bool ending_ = false;
    /** The sockets of all connections, closed at the end only. */
    std::vector<int> sockets_;
    std::string clientBytes_;
    std::string serverBytes_;
    /** One for each direction of each connection. */
    std::vector<std::jthread> relays_;
    std::jthread acceptor_;
};

} // namespace support
