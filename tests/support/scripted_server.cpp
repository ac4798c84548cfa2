#include "tests/support/scripted_server.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace support {

namespace {
/** Thrown through a conversation to end it: the client has gone, or the test is over. */
struct ConversationEnded {};

int checked(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), call);
    }
    return result;
}

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

void raiseEvent(int event) {
    const std::uint64_t one = 1;
    checked(static_cast<int>(::write(event, &one, sizeof(one))), "write");
}

bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}
} // namespace

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

Peer::Peer(ScriptedServer& server, int socket, std::size_t connection)
    : server_(server), socket_(socket), connection_(connection) {}

void Peer::send(std::string_view bytes, std::size_t pieceBytes) {
    const std::size_t piece = pieceBytes == 0 ? bytes.size() : pieceBytes;
    do {
        sendAtOnce(bytes.substr(0, piece));
        bytes.remove_prefix(std::min(piece, bytes.size()));
    } while (!bytes.empty());
}

void Peer::trickle(std::string_view bytes, std::chrono::milliseconds pause) {
    for (; !bytes.empty(); bytes.remove_prefix(1)) {
        sendAtOnce(bytes.substr(0, 1));
        server_.wait(-1, 0, false, pause);
    }
}

void Peer::sendAtOnce(std::string_view bytes) {
    const std::size_t left = server_.bytesAllowed() - std::min(server_.bytesAllowed(), sentHere_);
    const bool cut = bytes.size() >= left;
    bytes = bytes.substr(0, left);
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            sentHere_ += static_cast<std::size_t>(sent);
            server_.countSent(static_cast<std::size_t>(sent));
        } else if (wouldBlock()) {
            server_.waitForSocket(socket_, POLLOUT);
        } else {
            throw ConversationEnded{};
        }
    }
    if (cut) {
        server_.ending_ == Ending::Reset ? reset() : close();
    }
}

/** False once the client has gone. */
bool Peer::readSome() {
    std::array<char, 16384> bytes{};
    const ssize_t received = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (received > 0) {
        input_.append(bytes.data(), static_cast<std::size_t>(received));
    }
    return received > 0 || (received < 0 && wouldBlock());
}

std::string Peer::readLine() {
    for (;;) {
        const std::size_t lineFeed = input_.find('\n');
        if (lineFeed != std::string::npos) {
            std::string line = input_.substr(0, lineFeed);
            input_.erase(0, lineFeed + 1);
            if (line.ends_with('\r')) {
                line.pop_back();
            }
            server_.remember(connection_, line);
            return line;
        }
        server_.waitForSocket(socket_, POLLIN);
        if (!readSome()) {
            throw ConversationEnded{};
        }
    }
}

void Peer::rememberLinesLeft() {
    while (input_.find('\n') != std::string::npos) {
        readLine();
    }
}

void Peer::holdSilent() {
    while (server_.wait(socket_, POLLIN, true, ScriptedServer::kTimeLimit) !=
           ScriptedServer::Wake::Released) {
        if (!readSome()) {
            throw ConversationEnded{};
        }
    }
}

void Peer::close() {
    // Closing with unread bytes would send RST and could take the last bytes sent along.
    ::shutdown(socket_, SHUT_WR);
    do {
        server_.waitForSocket(socket_, POLLIN);
    } while (readSome());
    throw ConversationEnded{};
}

void Peer::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    throw ConversationEnded{};
}

Conversation holdAndSay(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) {
        peer.holdSilent();
        peer.send(bytes);
    };
}

void Script::operator()(Peer& peer) const {
    struct Player {
        Peer& peer;

        void operator()(const Send& step) { peer.send(step.bytes, step.pieceBytes); }

        void operator()(const ExpectLine&) { peer.readLine(); }

        void operator()(const Close&) { peer.close(); }

        void operator()(const Reset&) { peer.reset(); }

        void operator()(const HoldSilent&) { peer.holdSilent(); }

        void operator()(const Trickle& step) { peer.trickle(step.bytes, step.pause); }

        void operator()(const Stream& step) {
            for (std::string bytes = step.next(); !bytes.empty(); bytes = step.next()) {
                peer.send(bytes);
            }
        }
    };

    for (const Step& step : steps_) {
        std::visit(Player{peer}, step);
    }
    peer.close();
}

ScriptedServer::ScriptedServer(Conversation conversation)
    : ScriptedServer(std::vector<Conversation>{std::move(conversation)}) {}

ScriptedServer::ScriptedServer(std::vector<Conversation> conversations)
    : conversations_(std::move(conversations)),
      listener_(checked(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0), "socket")),
      stop_(checked(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd")),
      release_(checked(::eventfd(0, EFD_NONBLOCK | EFD_SEMAPHORE | EFD_CLOEXEC), "eventfd")),
      port_(bindToFreePort(listener_.get())) {
    checked(::listen(listener_.get(), SOMAXCONN), "listen");
    thread_ = std::jthread([this] { run(); });
}

ScriptedServer::~ScriptedServer() {
    raiseEvent(stop_.get());
}

QString ScriptedServer::address() const {
    return loopbackAddress(port_);
}

void ScriptedServer::run() {
    for (;;) {
        std::array<pollfd, 2> watched{{{listener_.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
        ::poll(watched.data(), watched.size(), -1);
        if (watched[1].revents != 0) {
            return;
        }
        const FileDescriptor socket(
            ::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket.get() >= 0) {
            const int atOnce = 1;
            ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof(atOnce));
            std::size_t connection = 0;
            {
                const std::scoped_lock lock(mutex_);
                connection = connections_++;
            }
            play(socket.get(), connection);
        }
        const std::scoped_lock lock(mutex_);
        ended_ = connections_;
        changed_.notify_all();
    }
}

void ScriptedServer::play(int socket, std::size_t connection) {
    Peer peer(*this, socket, connection);
    try {
        conversations_.at(std::min(connection, conversations_.size() - 1))(peer);
        peer.close();
    } catch (const ConversationEnded&) {
        peer.rememberLinesLeft();
    }
}

ScriptedServer::Wake ScriptedServer::wait(int socket, short events, bool releasable,
                                          std::chrono::milliseconds pause) const {
    std::array<pollfd, 3> watched{
        {{stop_.get(), POLLIN, 0}, {socket, events, 0}, {releasable ? release_.get() : -1, POLLIN, 0}}};
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(pause.count()));
    if (watched[0].revents != 0 || (ready == 0 && socket >= 0)) {
        throw ConversationEnded{};
    }
    if (watched[2].revents != 0) {
        std::uint64_t used = 0;
        checked(static_cast<int>(::read(release_.get(), &used, sizeof(used))), "read");
        return Wake::Released;
    }
    return watched[1].revents != 0 ? Wake::Socket : Wake::Pause;
}

void ScriptedServer::cutAfter(std::size_t bytes, Ending ending) {
    const std::scoped_lock lock(mutex_);
    byteLimit_ = bytes;
    ending_ = ending;
}

void ScriptedServer::release() {
    raiseEvent(release_.get());
}

std::size_t ScriptedServer::bytesAllowed() const {
    const std::scoped_lock lock(mutex_);
    return byteLimit_;
}

void ScriptedServer::remember(std::size_t connection, std::string line) {
    const std::scoped_lock lock(mutex_);
    lines_.push_back({connection, std::move(line)});
    changed_.notify_all();
}

void ScriptedServer::countSent(std::size_t bytes) {
    const std::scoped_lock lock(mutex_);
    bytesSent_ += bytes;
}

std::vector<std::string> ScriptedServer::commands() const {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> commands;
    for (const Line& line : lines_) {
        commands.push_back(line.text);
    }
    return commands;
}

std::vector<std::string> ScriptedServer::commands(std::size_t connection) const {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> commands;
    for (const Line& line : lines_) {
        if (line.connection == connection) {
            commands.push_back(line.text);
        }
    }
    return commands;
}

std::vector<std::string> ScriptedServer::keywords() const {
    std::vector<std::string> keywords = commands();
    for (std::string& line : keywords) {
        line.resize(std::min(line.find(' '), line.size()));
    }
    return keywords;
}

std::size_t ScriptedServer::connections() const {
    const std::scoped_lock lock(mutex_);
    return connections_;
}

std::size_t ScriptedServer::connectionsEnded() const {
    const std::scoped_lock lock(mutex_);
    return ended_;
}

std::size_t ScriptedServer::bytesSent() const {
    const std::scoped_lock lock(mutex_);
    return bytesSent_;
}

bool ScriptedServer::waitForEndOf(std::size_t connections) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTimeLimit, [&] { return ended_ >= connections; });
}

bool ScriptedServer::waitForCommands(std::size_t lines) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTimeLimit, [&] { return lines_.size() >= lines; });
}

RefusingPort::RefusingPort()
    : socket_(checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")),
      port_(bindToFreePort(socket_.get())) {}

QString RefusingPort::address() const {
    return loopbackAddress(port_);
}

} // namespace support
