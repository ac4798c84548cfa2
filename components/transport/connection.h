#pragma once

#include "components/transport/server_name.h"
#include "components/transport/stream.h"

#include <QDeadlineTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace transport {

/**
 * The error number for a connection that could not be opened or encrypted. `timedOut` and `lost` are the
 * numbers for these two outcomes, which differ between POP3 and SMTP.
 */
int openingErrorNumber(Outcome outcome, int timedOut, int lost) noexcept;

/** How well a connection is protected, as a person may be told. */
struct Protection {
    /** The version of the encryption, such as "TLS 1.3"; empty for a connection in clear. */
    QString encryption;
    /** The server has proved by a certificate that its name is its own. */
    bool serverProven = false;

    bool operator==(const Protection&) const = default;
};

/**
 * One byte stream to a server. A wait runs an event loop of its own, so that the windows stay alive. The loop
 * only waits: the caller takes the bytes after the wait has returned.
 *
 * Everything above reads and writes plain bytes and never sees the stream itself, encrypted or not.
 */
class Connection {
  public:
    Connection() = default;
    ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /**
     * Looks the name up and connects, trying every address of the name; with Security::FromTheStart the
     * connection is encrypted then. Returns Done, or why it failed.
     */
    [[nodiscard]] Outcome open(const ServerName& server, QDeadlineTimer deadline);

    /**
     * Begins encryption on an open connection in clear. Returns Done, or why it failed: HandshakeFailed also
     * when bytes have come that were not asked for, since nothing that came in clear may count afterwards.
     * After a failure the connection is closed.
     */
    [[nodiscard]] Outcome encrypt(QDeadlineTimer deadline);

    /** How the connection that is open, or was open last, is protected. */
    const Protection& protection() const noexcept { return protection_; }

    /**
     * The certificate of that connection's server, also of one whose encryption has failed over it; nothing
     * when there is none, and after a close() with something unsent.
     */
    std::optional<Certificate> certificate() const;

    /** True when the server is on this computer: its address is 127.0.0.0/8 or ::1. */
    bool isToThisComputer() const;

    /**
     * True while the stream is open, and after the server has closed it until all that it sent has been
     * taken.
     */
    bool isOpen() const;

    /** Starts to send the bytes; does not wait. */
    void send(std::string_view bytes);

    /**
     * Like send(), for bytes that many more follow. They leave only during the next wait, so that the windows
     * stay alive however fast the network is.
     */
    void enqueue(std::string_view bytes);

    /** Waits until there are bytes to take. Done, TimedOut, or Lost when the stream has ended. */
    [[nodiscard]] Outcome waitForBytes(QDeadlineTimer deadline);

    /** Waits until all that was sent has been handed to the system. Done, TimedOut or Lost. */
    [[nodiscard]] Outcome waitUntilSent(QDeadlineTimer deadline);

    /**
     * Waits until all that was sent has been handed to the system, or until there are bytes to take: a server
     * may reply early, to refuse the rest. Done, TimedOut or Lost.
     */
    [[nodiscard]] Outcome waitUntilSentOrAnswered(QDeadlineTimer deadline);

    /** True when there are bytes to take. */
    bool hasBytes() const;

    /** Bytes that were sent and have not been handed to the system. */
    long long unsentBytes() const;

    /** The local address of the stream, as text; empty when the stream is not open. */
    QString localAddress() const;

    /** Returns the bytes that have come, at most kReadBytes of them. */
    std::string takeBytes();

    /** Closes in an orderly way once all that was sent has left; does not wait for that. */
    void close();

    /** Closes at once: what has not been handed to the system never leaves. */
    void abort();

    static constexpr long long kReadBytes = 64LL << 10;

  private:
    template <class Condition>
    Outcome waitUntil(const Condition& condition, QDeadlineTimer deadline);
    Outcome waitUntilOpen(QDeadlineTimer deadline);

    ServerName server_;
    std::unique_ptr<Stream> stream_;
    /** The stream while it is in clear. */
    ClearStream* clear_ = nullptr;
    /** The stream once it is encrypted, or should have been. */
    TlsStream* tls_ = nullptr;
    Protection protection_;
};

} // namespace transport
