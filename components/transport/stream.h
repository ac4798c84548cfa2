#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace transport {

/** How a wait for the network ended. */
enum class Outcome { Done, NameUnknown, Refused, Unreachable, TimedOut, Lost };

/** A byte stream to a server. No call waits: `changed` tells when something has happened. */
class Stream {
  public:
    enum class State { Opening, Open, Closed };

    virtual ~Stream() = default;

    /**
     * Raised from the event loop when the state changes, bytes come, or bytes have been handed to the system.
     */
    std::function<void()> changed;

    virtual void open(const QString& host, std::uint16_t port) = 0;
    virtual State state() const = 0;

    /** Why opening failed. */
    virtual Outcome failure() const = 0;

    virtual long long bytesAvailable() const = 0;
    virtual std::string read(long long maximumBytes) = 0;

    /** Bytes that were written and have not been handed to the system. */
    virtual long long unsentBytes() const = 0;
    virtual void write(std::string_view bytes) = 0;
    virtual void flush() = 0;

    /** The local address, as text; empty when the stream is not open. */
    virtual QString localAddress() const = 0;

    /**
     * Closes once all that was written has been sent, for which the stream need not be kept. Nothing else may
     * be done with it afterwards.
     */
    virtual void leave() = 0;

    /** Closes at once: what has not been handed to the system never leaves. */
    virtual void abort() = 0;

    /** Most bytes that are received before they are read; beyond that, TCP slows the server down. */
    static constexpr long long kReadBufferBytes = 256LL << 10;
};

/**
 * Makes a stream over TCP. The network library is loaded at the first call, because the log-on window does
 * not need it. Returns nullptr when the library cannot be loaded.
 */
std::unique_ptr<Stream> makeStream();

/** Loads the network library ahead of the first call; does nothing when it is loaded, or cannot be. */
void loadNetwork();

} // namespace transport
