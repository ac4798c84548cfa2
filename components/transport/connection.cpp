#include "components/transport/connection.h"

#include "platform/nested_wait.h"
#include "platform/runtime_error.h"

#include <QEventLoop>
#include <QTimer>

namespace transport {

int openingErrorNumber(Outcome outcome, int timedOut, int lost) noexcept {
    switch (outcome) {
    case Outcome::NameUnknown:
        return platform::errors::HostNotFound;
    case Outcome::Refused:
        return platform::errors::ConnectionRefused;
    case Outcome::Unreachable:
        return platform::errors::NetworkUnreachable;
    case Outcome::TimedOut:
        return timedOut;
    default:
        return lost;
    }
}

template <class Condition>
Outcome Connection::waitUntil(const Condition& condition, QDeadlineTimer deadline) {
    const platform::NestedWait wait;
    // The stream outlives the wait: whoever runs inside it may not close this connection.
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
        // A message box opened by somebody else's timer can keep this loop from returning past the deadline;
        // what came meanwhile still counts, which is why the condition is looked at first.
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

Outcome Connection::open(const ServerName& server, QDeadlineTimer deadline) {
    stream_ = makeStream();
    if (!stream_) {
        return Outcome::Unreachable;
    }
    stream_->open(server.host, server.port);
    const Outcome outcome =
        waitUntil([](const Stream& stream) { return stream.state() == Stream::State::Open; }, deadline);
    if (outcome == Outcome::Done) {
        return outcome;
    }
    const Outcome reason = outcome == Outcome::TimedOut ? outcome : stream_->failure();
    stream_->abort();
    return reason;
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
    // A stream that loses its connection forgets what it had still to send, which must not look like success.
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
