#include "components/transport/connection.h"

#include <QEventLoop>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTimer>

#include "platform/nested_wait.h"

namespace transport {

namespace {
Outcome outcomeOf(QAbstractSocket::SocketError error) {
    switch (error) {
    case QAbstractSocket::HostNotFoundError:
        return Outcome::NameUnknown;
    case QAbstractSocket::ConnectionRefusedError:
        return Outcome::Refused;
    case QAbstractSocket::NetworkError:
        return Outcome::Unreachable;
    case QAbstractSocket::SocketTimeoutError:
        return Outcome::TimedOut;
    default:
        return Outcome::Lost;
    }
}
} // namespace

Connection::Connection() = default;

Connection::~Connection() = default;

template <class Condition>
Outcome Connection::waitUntil(const Condition& condition, QDeadlineTimer deadline) {
    const platform::NestedWait wait;
    // A handler that runs inside this wait may close the stream; the socket itself outlives the wait.
    QTcpSocket* const socket = socket_.get();
    QEventLoop loop;
    const auto wake = [&loop] { loop.quit(); };
    QObject::connect(socket, &QTcpSocket::stateChanged, &loop, wake);
    QObject::connect(socket, &QTcpSocket::readyRead, &loop, wake);
    QObject::connect(socket, &QTcpSocket::bytesWritten, &loop, wake);
    QTimer alarm;
    alarm.setSingleShot(true);
    QObject::connect(&alarm, &QTimer::timeout, &loop, wake);
    while (!condition()) {
        if (socket->state() == QAbstractSocket::UnconnectedState) {
            return Outcome::Lost;
        }
        // A message box opened by somebody else's timer can keep this loop from returning past the deadline;
        // what came meanwhile still counts, which is why the condition is looked at first.
        if (deadline.hasExpired()) {
            return Outcome::TimedOut;
        }
        if (!deadline.isForever()) {
            alarm.start(static_cast<int>(deadline.remainingTime()));
        }
        loop.exec(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return Outcome::Done;
}

Outcome Connection::open(const ServerName& server, QDeadlineTimer deadline) {
    socket_ = std::make_unique<QTcpSocket>();
    socket_->setProxy(QNetworkProxy::NoProxy);
    socket_->setReadBufferSize(kReadBufferBytes);
    socket_->connectToHost(server.host, server.port);
    QTcpSocket* const socket = socket_.get();
    const Outcome outcome =
        waitUntil([socket] { return socket->state() == QAbstractSocket::ConnectedState; }, deadline);
    if (outcome != Outcome::Done) {
        const Outcome reason = outcome == Outcome::TimedOut ? outcome : outcomeOf(socket_->error());
        socket_->abort();
        return reason;
    }
    // Commands are short and each one is waited for: none may linger for company.
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return Outcome::Done;
}

bool Connection::isOpen() const {
    return socket_ && (socket_->state() == QAbstractSocket::ConnectedState || socket_->bytesAvailable() > 0);
}

void Connection::send(std::string_view bytes) {
    socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
    socket_->flush();
}

Outcome Connection::waitForBytes(QDeadlineTimer deadline) {
    return waitUntil([this] { return socket_->bytesAvailable() > 0; }, deadline);
}

Outcome Connection::waitUntilSent(QDeadlineTimer deadline) {
    return waitUntil([this] { return socket_->bytesToWrite() == 0; }, deadline);
}

std::string Connection::takeBytes() {
    std::string bytes(static_cast<std::size_t>(std::min(kReadBytes, socket_->bytesAvailable())), '\0');
    const qint64 taken = socket_->read(bytes.data(), static_cast<qint64>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<qint64>(taken, 0)));
    return bytes;
}

void Connection::close() {
    if (!socket_) {
        return;
    }
    if (socket_->state() == QAbstractSocket::ConnectedState && socket_->bytesToWrite() > 0) {
        // The socket sends what is left and then deletes itself.
        QTcpSocket* const leaving = socket_.release();
        QObject::connect(leaving, &QTcpSocket::disconnected, leaving, &QObject::deleteLater);
        leaving->disconnectFromHost();
        return;
    }
    socket_->abort();
}

} // namespace transport
