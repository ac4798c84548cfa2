#include "tests/support/peer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace support {

namespace {
bool wouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}
} // namespace

Peer::Peer(ServerState& server, int socket, std::size_t connection)
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
    const ServerState::Cut limit = server_.cut();
    const std::size_t left = limit.bytes - std::min(limit.bytes, sentHere_);
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
        limit.ending == Ending::Reset ? reset() : close();
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
    while (server_.wait(socket_, POLLIN, true, ServerState::kTimeLimit) != ServerState::Wake::Released) {
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

} // namespace support
