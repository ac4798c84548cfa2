#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include <QDeadlineTimer>

#include "components/transport/server_name.h"

class QTcpSocket;

namespace transport {

/** How a wait for the network ended. */
enum class Outcome { Done, NameUnknown, Refused, Unreachable, TimedOut, Lost };

/**
 * One byte stream to a server. Waiting runs an event loop of its own, so the windows stay alive meanwhile,
 * and that loop does nothing but wait: what came is handed over to the caller, who acts on it in its own
 * frame.
 *
 * Everything above reads and writes plain bytes and never sees the socket, so that encryption can be put
 * under it here without a change elsewhere.
 */
class Connection {
  public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /** Looks the name up and connects, trying every address of the name. Done, or why it could not be. */
    [[nodiscard]] Outcome open(const ServerName& server, QDeadlineTimer deadline);

    /** True while the stream can bring bytes: the server may have closed, but not all it sent is taken. */
    bool isOpen() const;

    /** Puts the bytes on their way; does not wait. */
    void send(std::string_view bytes);

    /** Waits until there are bytes to take. Done, TimedOut, or Lost when the stream has ended. */
    [[nodiscard]] Outcome waitForBytes(QDeadlineTimer deadline);

    /** Waits until all that was sent has been handed to the system. Done, TimedOut or Lost. */
    [[nodiscard]] Outcome waitUntilSent(QDeadlineTimer deadline);

    /** Returns the bytes that have come, at most kReadBytes of them. */
    std::string takeBytes();

    /** Closes in an orderly way after what was sent; does not wait. */
    void close();

    static constexpr long long kReadBytes = 64LL << 10;
    /** What a server may have sent ahead of us, in bytes; beyond it the network slows the server down. */
    static constexpr long long kReadBufferBytes = 256LL << 10;

  private:
    template <class Condition>
    Outcome waitUntil(const Condition& condition, QDeadlineTimer deadline);

    std::unique_ptr<QTcpSocket> socket_;
};

} // namespace transport
