#include "components/transport/connection.h"

#include "platform/nested_wait.h"
#include "platform/runtime_error.h"

#include <QEventLoop>
#include <QTimer>

#include <utility>

namespace transport {

int openingErrorNumber(Outcome outcome, int timedOut, int lost) noexcept {
    switch (outcome) {
    case Outcome::NameUnknown:
        return platform::errors::HostNotFound;
    case Outcome::Refused:
        return platform::errors::ConnectionRefused;
    case Outcome::Unreachable:
        return platform::errors::NetworkUnreachable;
    case Outcome::IssuerNotTrusted:
        return platform::errors::CertificateNotTrusted;
    case Outcome::OtherName:
        return platform::errors::CertificateForOtherName;
    case Outcome::NotValidNow:
        return platform::errors::CertificateNotValidNow;
    case Outcome::HandshakeFailed:
        return platform::errors::EncryptionFailed;
    case Outcome::TimedOut:
        return timedOut;
    default:
        return lost;
    }
}

template <class Condition>
Outcome Connection::waitUntil(const Condition& condition, QDeadlineTimer deadline) {
    const platform::NestedWait wait;
    // The stream must outlive the wait: handlers that run during it must not close this connection.
    Stream& stream = *stream_;
    QEventLoop loop;
    stream.changed = [&loop] { loop.quit(); };
    QTimer alarm;
    alarm.setSingleShot(true);
    QObject::connect(&alarm, &QTimer::timeout, &loop, &QEventLoop::quit);
    Outcome outcome = Outcome::Done;
    while (!condition(stream)) {
        if (stream.state() == Stream::State::Closed) {
            outcome = Outcome::Lost;
            break;
        }
        // A message box that another handler opens during the wait can keep this loop from returning until
        // after the deadline. Bytes that came meanwhile still count, so the condition is checked first.
        if (deadline.hasExpired()) {
            outcome = Outcome::TimedOut;
            break;
        }
        if (!deadline.isForever()) {
            alarm.start(static_cast<int>(deadline.remainingTime()));
        }
        loop.exec();
    }
    stream.changed = nullptr;
    return outcome;
}

Outcome Connection::waitUntilOpen(QDeadlineTimer deadline) {
    const Outcome outcome =
        waitUntil([](const Stream& stream) { return stream.state() == Stream::State::Open; }, deadline);
    if (outcome == Outcome::Done) {
        return outcome;
    }
    const Outcome reason = stream_->failure();
    stream_->abort();
    return reason;
}

Outcome Connection::open(const ServerName& server, QDeadlineTimer deadline) {
    server_ = server;
    protection_ = {};
    const bool encrypted = server.security == Security::FromTheStart;
    std::unique_ptr<ClearStream> clear = encrypted ? nullptr : makeClearStream();
    std::unique_ptr<TlsStream> tls = encrypted ? makeTlsStream() : nullptr;
    clear_ = clear.get();
    tls_ = tls.get();
    stream_ = encrypted ? std::unique_ptr<Stream>(std::move(tls)) : std::move(clear);
    if (!stream_) {
        return Outcome::Unreachable;
    }
    stream_->open(server);
    const Outcome outcome = waitUntilOpen(deadline);
    if (encrypted && outcome == Outcome::Done) {
        protection_ = {tls_->version(), true};
    }
    return outcome;
}

Outcome Connection::encrypt(QDeadlineTimer deadline) {
    // The descriptor takes what lies in the system's buffer along, where it counts as a part of the handshake
    // and breaks it. What has been read already would be lost silently.
    const bool spokeTooEarly = hasBytes();
    const int descriptor = clear_ == nullptr || spokeTooEarly ? -1 : clear_->takeDescriptor();
    std::unique_ptr<TlsStream> tls = descriptor < 0 ? nullptr : makeTlsStream();
    if (!tls) {
        abort();
        return Outcome::HandshakeFailed;
    }
    tls_ = tls.get();
    clear_ = nullptr;
    stream_ = std::move(tls);
    tls_->encrypt(descriptor, server_);
    const Outcome outcome = waitUntilOpen(deadline);
    if (outcome == Outcome::Done) {
        protection_ = {tls_->version(), mustBeProven(server_.security)};
    }
    return outcome;
}

std::optional<Certificate> Connection::certificate() const {
    return tls_ == nullptr ? std::nullopt : tls_->certificate();
}

bool Connection::isToThisComputer() const {
    return stream_ && stream_->isToThisComputer();
}

bool Connection::isOpen() const {
    return stream_ && (stream_->state() == Stream::State::Open || stream_->bytesAvailable() > 0);
}

void Connection::send(std::string_view bytes) {
    stream_->write(bytes);
    stream_->flush();
}

void Connection::enqueue(std::string_view bytes) {
    stream_->write(bytes);
}

Outcome Connection::waitForBytes(QDeadlineTimer deadline) {
    return waitUntil([](const Stream& stream) { return stream.bytesAvailable() > 0; }, deadline);
}

Outcome Connection::waitUntilSent(QDeadlineTimer deadline) {
    return waitUntil([](const Stream& stream) { return stream.unsentBytes() == 0; }, deadline);
}

Outcome Connection::waitUntilSentOrAnswered(QDeadlineTimer deadline) {
    // A stream that loses its connection forgets its unsent bytes, which must not look like success.
    return waitUntil(
        [](const Stream& stream) {
            const bool sent = stream.state() == Stream::State::Open && stream.unsentBytes() == 0;
            return stream.bytesAvailable() > 0 || sent;
        },
        deadline);
}

bool Connection::hasBytes() const {
    return stream_ && stream_->bytesAvailable() > 0;
}

long long Connection::unsentBytes() const {
    return stream_ ? stream_->unsentBytes() : 0;
}

QString Connection::localAddress() const {
    return stream_ ? stream_->localAddress() : QString();
}

std::string Connection::takeBytes() {
    return stream_->read(kReadBytes);
}

void Connection::close() {
    if (!stream_) {
        return;
    }
    if (stream_->state() == Stream::State::Open && stream_->unsentBytes() > 0) {
        stream_->leave();
        clear_ = nullptr;
        tls_ = nullptr;
        stream_.reset();
        return;
    }
    stream_->abort();
}

void Connection::abort() {
    if (stream_) {
        stream_->abort();
    }
}

} // namespace transport
