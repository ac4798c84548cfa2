#include "tests/support/recording_relay.h"

#include <QStringList>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {
sockaddr_in addressOf(const std::string& host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (inet_pton(AF_INET, host.c_str(), &address.sin_addr) != 1) {
        throw std::runtime_error("no address: " + host);
    }
    return address;
}

int newSocket() {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        throw std::runtime_error("no socket");
    }
    return socket;
}

bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}
} // namespace

RecordingRelay::RecordingRelay(const QString& server)
    : serverHost_(server.section(u':', 0, 0).toStdString()),
      serverPort_(server.section(u':', 1, 1).toUShort()),
      listener_(newSocket()) {
    sockaddr_in address = addressOf("127.0.0.1", 0);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, generic, length) != 0 || listen(listener_, SOMAXCONN) != 0 ||
        getsockname(listener_, generic, &length) != 0) {
        close(listener_);
        throw std::runtime_error("no port to listen at");
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::jthread([this] { serve(); });
}

RecordingRelay::~RecordingRelay() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        shutdown(listener_, SHUT_RDWR);
        for (const int socket : sockets_) {
            shutdown(socket, SHUT_RDWR);
        }
    }
    acceptor_.join();
    relays_.clear();
    for (const int socket : sockets_) {
        close(socket);
    }
    close(listener_);
}

QString RecordingRelay::address() const {
    return QStringLiteral("127.0.0.1:%1").arg(port_);
}

std::size_t RecordingRelay::connections() const {
    const std::lock_guard lock(mutex_);
    return sockets_.size() / 2;
}

std::string RecordingRelay::clientBytes() const {
    const std::lock_guard lock(mutex_);
    return clientBytes_;
}

std::string RecordingRelay::serverBytes() const {
    const std::lock_guard lock(mutex_);
    return serverBytes_;
}

int RecordingRelay::connectToServer() const {
    const sockaddr_in address = addressOf(serverHost_, serverPort_);
    const int server = newSocket();
    // Where this fails, so does the first attempt to send; the client sees that as the end.
    static_cast<void>(connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    return server;
}

void RecordingRelay::serve() {
    for (;;) {
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex_);
        if (client < 0 || ending_) {
            if (client >= 0) {
                close(client);
            }
            return;
        }
        const int server = connectToServer();
        sockets_.insert(sockets_.end(), {client, server});
        relays_.emplace_back([this, client, server] { relay(client, server, clientBytes_); });
        relays_.emplace_back([this, client, server] { relay(server, client, serverBytes_); });
    }
}

void RecordingRelay::relay(int from, int to, std::string& record) {
    std::array<char, 64U << 10U> buffer{};
    for (;;) {
        const ssize_t received = recv(from, buffer.data(), buffer.size(), 0);
        if (received <= 0) {
            break;
        }
        const std::string_view bytes(buffer.data(), static_cast<std::size_t>(received));
        {
            // Remembered first: who has got the answer to something finds it in the record.
            const std::lock_guard lock(mutex_);
            record += bytes;
        }
        if (!sendAll(to, bytes)) {
            break;
        }
    }
    shutdown(to, SHUT_WR);
}

} // namespace support
