#pragma once

#include "components/transport/stream.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <utility>

namespace network {

/** What the streams over a socket of Qt have in common. `Kind` is the interface that they implement. */
template <class Kind, class Socket>
class SocketStream : public Kind {
  public:
    SocketStream() : socket_(std::make_unique<Socket>()) {
        socket_->setProxy(QNetworkProxy::NoProxy);
        socket_->setReadBufferSize(transport::Stream::kReadBufferBytes);
        const auto tellChange = [this] { tell(); };
        QObject::connect(socket_.get(), &QTcpSocket::stateChanged, tellChange);
        // Nagle's algorithm is off: commands are short, and every command waits for its reply.
        QObject::connect(socket_.get(), &QTcpSocket::connected, [this] {
            socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            acknowledgeAtOnce();
        });
        QObject::connect(socket_.get(), &QTcpSocket::readyRead, [this] {
            acknowledgeAtOnce();
            tell();
        });
        QObject::connect(socket_.get(), &QTcpSocket::bytesWritten, tellChange);
    }

    ~SocketStream() override {
        if (socket_) {
            socket_->disconnect();
        }
    }

    SocketStream(const SocketStream&) = delete;
    SocketStream& operator=(const SocketStream&) = delete;

    transport::Outcome failure() const override {
        using transport::Outcome;
        if (socket_->state() != QAbstractSocket::UnconnectedState) {
            return Outcome::TimedOut;
        }
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
        return this->state() == transport::Stream::State::Open ? socket_->localAddress().toString()
                                                               : QString();
    }

    bool isToThisComputer() const override { return socket_ && socket_->peerAddress().isLoopback(); }

    void leave() override {
        // The socket sends what is left and then deletes itself. The timer deletes it when the server never
        // reads.
        constexpr std::chrono::seconds leavingTime{10};
        socket_->disconnect();
        Socket* const leaving = socket_.release();
        QObject::connect(leaving, &QTcpSocket::disconnected, leaving, &QObject::deleteLater);
        QTimer::singleShot(leavingTime, leaving, &QObject::deleteLater);
        leaving->disconnectFromHost();
    }

    void abort() override {
        if (socket_) {
            socket_->abort();
        }
    }

  protected:
    /**
     * Acknowledges what comes at once. Some servers write a reply in small pieces and wait with each of them
     * for the acknowledgement of the one before, which the system delays by 40 ms otherwise. It has to be
     * said again and again, because the system goes back to delaying by itself.
     */
    void acknowledgeAtOnce() const {
        const int on = 1;
        // Where it fails, replies come as they came before.
        static_cast<void>(::setsockopt(static_cast<int>(socket_->socketDescriptor()), IPPROTO_TCP,
                                       TCP_QUICKACK, &on, sizeof(on)));
    }

    /** nullptr after leave(). */
    Socket* socket() const noexcept { return socket_.get(); }

    void tell() const {
        if (this->changed) {
            this->changed();
        }
    }

  private:
    std::unique_ptr<Socket> socket_;
};

} // namespace network
