#pragma once

#include "components/transport/server_name.h"
#include "components/transport/stream.h"

#include <QDeadlineTimer>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace transport {

/**
 * The error number for a connection that could not be opened. How long one waits, and what a lost connection
 * is called, differs from one protocol to the other.
 */
int openingErrorNumber(Outcome outcome, int timedOut, int lost) noexcept;

/**
 * One byte stream to a server. Waiting runs an event loop of its own, so the windows stay alive meanwhile,
 * and that loop does nothing but wait: what came is handed over to the caller, who acts on it in its own
 * frame.
 *
 * Everything above reads and writes plain bytes and never sees the stream itself, so that encryption can be
 * put under it without a change elsewhere.
 */
class Connection {
  public:
    Connection() = default;
    ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /** Looks the name up and connects, trying every address of the name. Done, or why it could not be. */
    [[nodiscard]] Outcome open(const ServerName& server, QDeadlineTimer deadline);

    /** True while the stream can bring bytes: the server may have closed, but not all it sent is taken. */
    bool isOpen() const;

    /** Puts the bytes on their way; does not wait. */
    void send(std::string_view bytes);

    /**
     * The same for bytes of which many more follow: they leave during the next wait, so that the windows stay
     * alive however fast the network is.
     */
    void enqueue(std::string_view bytes);

    /** Waits until there are bytes to take. Done, TimedOut, or Lost when the stream has ended. */
    [[nodiscard]] Outcome waitForBytes(QDeadlineTimer deadline);

    /** Waits until all that was sent has been handed to the system. Done, TimedOut or Lost. */
    [[nodiscard]] Outcome waitUntilSent(QDeadlineTimer deadline);

    /**
     * Waits until all that was sent has been handed to the system, or until there are bytes to take, which a
     * server that will have no more of it may send. Done, TimedOut or Lost.
     */
    [[nodiscard]] Outcome waitUntilSentOrAnswered(QDeadlineTimer deadline);

    /** True when there are bytes to take. */
    bool hasBytes() const;

    /** Bytes that were sent and have not been handed to the system. */
    long long unsentBytes() const;

    /** The address of our end of the stream, as text; empty when it is not open. */
    QString localAddress() const;

    /** Returns the bytes that have come, at most kReadBytes of them. */
    std::string takeBytes();

    /** Closes in an orderly way after what was sent; does not wait. */
    void close();

    /** Closes at once: what has not been handed to the system never leaves. */
    void abort();

    static constexpr long long kReadBytes = 64LL << 10;

  private:
    template <class Condition>
    Outcome waitUntil(const Condition& condition, QDeadlineTimer deadline);

    std::unique_ptr<Stream> stream_;
};

} // namespace transport
