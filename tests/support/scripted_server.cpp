#include "tests/support/scripted_server.h"

#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <utility>

namespace support {

namespace {
/** Binds the socket to a free port of the loopback interface and returns the port. */
std::uint16_t bindToFreePort(int socket) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    checked(::bind(socket, generic, sizeof(address)), "bind");
    socklen_t size = sizeof(address);
    checked(::getsockname(socket, generic, &size), "getsockname");
    return ntohs(address.sin_port);
}

QString loopbackAddress(std::uint16_t port) {
    return QStringLiteral("127.0.0.1:%1").arg(port);
}
} // namespace

ScriptedServer::ScriptedServer(Conversation conversation)
    : ScriptedServer(std::vector<Conversation>{std::move(conversation)}) {}

ScriptedServer::ScriptedServer(std::vector<Conversation> conversations)
    : conversations_(std::move(conversations)),
      listener_(checked(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket")),
      port_(bindToFreePort(listener_.get())) {
    checked(::listen(listener_.get(), SOMAXCONN), "listen");
    thread_ = std::jthread([this] { run(); });
}

ScriptedServer::~ScriptedServer() {
    state_.stop();
}

QString ScriptedServer::address() const {
    return loopbackAddress(port_);
}

void ScriptedServer::run() {
    while (state_.waitForClient(listener_.get())) {
        const FileDescriptor socket(
            ::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket.get() >= 0) {
            const int atOnce = 1;
            ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof(atOnce));
            play(socket.get());
        }
        state_.countEnds();
    }
}

void ScriptedServer::play(int socket) {
    const std::size_t connection = state_.countConnection();
    Peer peer(state_, socket, connection);
    try {
        conversations_.at(std::min(connection, conversations_.size() - 1))(peer);
        peer.close();
    } catch (const ConversationEnded&) {
        peer.rememberLinesLeft();
    }
}

std::vector<std::string> ScriptedServer::keywords() const {
    std::vector<std::string> keywords = commands();
    for (std::string& line : keywords) {
        line.resize(std::min(line.find(' '), line.size()));
    }
    return keywords;
}

RefusingPort::RefusingPort()
    : socket_(checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")),
      port_(bindToFreePort(socket_.get())) {}

QString RefusingPort::address() const {
    return loopbackAddress(port_);
}

} // namespace support
