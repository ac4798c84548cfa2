// The one source that knows sockets. It is a library of its own, loaded at the first connection.

#include "components/transport/stream.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

namespace {
using transport::Outcome;
using transport::Stream;

/** How long a closed stream may take to send its last bytes. */
constexpr std::chrono::seconds kLeavingTime{10};

class TcpStream : public Stream {
  public:
    TcpStream() : socket_(std::make_unique<QTcpSocket>()) {
        const auto tell = [this] {
            if (changed) {
                changed();
            }
        };
        QObject::connect(socket_.get(), &QTcpSocket::stateChanged, tell);
        // Nagle's algorithm is off: commands are short, and every command waits for its reply.
        QObject::connect(socket_.get(), &QTcpSocket::connected,
                         [this] { socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1); });
        QObject::connect(socket_.get(), &QTcpSocket::readyRead, tell);
        QObject::connect(socket_.get(), &QTcpSocket::bytesWritten, tell);
    }

    ~TcpStream() override {
        if (socket_) {
            socket_->disconnect();
        }
    }

    TcpStream(const TcpStream&) = delete;
    TcpStream& operator=(const TcpStream&) = delete;

    void open(const QString& host, std::uint16_t port) override {
        socket_->setProxy(QNetworkProxy::NoProxy);
        socket_->setReadBufferSize(kReadBufferBytes);
        socket_->connectToHost(host, port);
    }

    State state() const override {
        if (!socket_ || socket_->state() == QAbstractSocket::UnconnectedState) {
            return State::Closed;
        }
        return socket_->state() == QAbstractSocket::ConnectedState ? State::Open : State::Opening;
    }

    Outcome failure() const override {
        switch (socket_->error()) {
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

    long long bytesAvailable() const override { return socket_ ? socket_->bytesAvailable() : 0; }

    std::string read(long long maximumBytes) override {
        std::string bytes(static_cast<std::size_t>(std::min(maximumBytes, bytesAvailable())), '\0');
        const qint64 taken = socket_->read(bytes.data(), static_cast<qint64>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(std::max<qint64>(taken, 0)));
        return bytes;
    }

    long long unsentBytes() const override { return socket_ ? socket_->bytesToWrite() : 0; }

    void write(std::string_view bytes) override {
        socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
    }

    void flush() override { socket_->flush(); }

    QString localAddress() const override {
        return state() == State::Open ? socket_->localAddress().toString() : QString();
    }

    void leave() override {
        // The socket sends what is left and then deletes itself. The timer deletes it when the server never
        // reads.
        socket_->disconnect();
        QTcpSocket* const leaving = socket_.release();
        QObject::connect(leaving, &QTcpSocket::disconnected, leaving, &QObject::deleteLater);
        QTimer::singleShot(kLeavingTime, leaving, &QObject::deleteLater);
        leaving->disconnectFromHost();
    }

    void abort() override {
        if (socket_) {
            socket_->abort();
        }
    }

  private:
    std::unique_ptr<QTcpSocket> socket_;
};
} // namespace

extern "C" __attribute__((visibility("default"))) Stream* brindlewakeMakeTcpStream() {
    return std::make_unique<TcpStream>().release();
}
