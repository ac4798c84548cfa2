#pragma once

#include "components/transport/certificate.h"
#include "components/transport/server_name.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace transport {

/** How a wait for the network ended. */
enum class Outcome {
    Done,
    NameUnknown,
    Refused,
    Unreachable,
    TimedOut,
    Lost,
    /** Nobody whom this computer trusts has issued the server's certificate. */
    IssuerNotTrusted,
    /** The certificate is for another name than the server's. */
    OtherName,
    /** The certificate is no longer valid, or not yet. */
    NotValidNow,
    /** The encryption could not be begun for another reason. */
    HandshakeFailed
};

/** A byte stream to a server. No call waits: `changed` tells when something has happened. */
class Stream {
  public:
    enum class State { Opening, Open, Closed };

    virtual ~Stream() = default;

    /**
     * Raised from the event loop when the state changes, bytes come, or bytes have been handed to the system.
     */
    std::function<void()> changed;

    /** Connects. With Security::FromTheStart the stream has to be one of makeTlsStream(). */
    virtual void open(const ServerName& server) = 0;

    virtual State state() const = 0;

    /** Why the stream could not be opened; while it is Opening, what it means when time runs out now. */
    virtual Outcome failure() const = 0;

    virtual long long bytesAvailable() const = 0;
    virtual std::string read(long long maximumBytes) = 0;

    /** Bytes that were written and have not been handed to the system. */
    virtual long long unsentBytes() const = 0;
    virtual void write(std::string_view bytes) = 0;
    virtual void flush() = 0;

    /** The local address, as text; empty when the stream is not open. */
    virtual QString localAddress() const = 0;

    /** True when the server is on this computer: its address is 127.0.0.0/8 or ::1. */
    virtual bool isToThisComputer() const = 0;

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

/** A stream that is encrypted (TLS 1.2 or later). It is Open only when the encryption is. */
class TlsStream : public Stream {
  public:
    /** Begins encryption on the open connection of this descriptor, which the stream owns from now on. */
    virtual void encrypt(int descriptor, const ServerName& server) = 0;

    /** The version of the encryption, such as "TLS 1.3"; empty while there is none. */
    virtual QString version() const = 0;

    /** What the server has presented, also when the encryption has failed over it; nothing for none. */
    virtual std::optional<Certificate> certificate() const = 0;
};

/** A stream in clear. */
class ClearStream : public Stream {
  public:
    /**
     * Gives the system's descriptor of the open connection away, -1 when there is none. The stream is closed
     * then, but not the connection.
     */
    virtual int takeDescriptor() = 0;
};

/**
 * Makes a stream over TCP. The network library is loaded at the first call, because the log-on window does
 * not need it. Returns nullptr when the library cannot be loaded.
 */
std::unique_ptr<ClearStream> makeClearStream();

/** The same for an encrypted stream, which has a library of its own, with all that TLS needs. */
std::unique_ptr<TlsStream> makeTlsStream();

/** The name and the version of the library that encrypts; empty when it cannot be loaded. */
QString tlsLibraryVersion();

/** Loads the network library ahead of the first call; does nothing when it is loaded, or cannot be. */
void loadNetwork();

} // namespace transport
