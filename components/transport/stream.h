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

/** A byte stream to a server that never waits; it tells when anything about it has changed. */
class Stream {
  public:
    enum class State { Opening, Open, Closed };

    virtual ~Stream() = default;

    /** Raised from the event loop when the state changes, bytes come, or bytes have been handed on. */
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

    /** The address of our end, as text; empty when the stream is not open. */
    virtual QString localAddress() const = 0;

    /** Closes after what was written; the stream is of no more use, and sends the rest without its owner. */
    virtual void leave() = 0;

    /** Closes at once: what has not been handed to the system never leaves. */
    virtual void abort() = 0;

    /** What a server may have sent ahead of us, in bytes; beyond it the network slows the server down. */
    static constexpr long long kReadBufferBytes = 256LL << 10;
};

/**
 * Makes a stream over TCP. The library that knows the network is loaded at the first call: a program that
 * only shows its log-on window need not carry it. Nothing when the library cannot be loaded.
 */
std::unique_ptr<Stream> makeStream();

/** Loads that library ahead of the first call; does nothing when it is loaded, or cannot be. */
void loadNetwork();

} // namespace transport
