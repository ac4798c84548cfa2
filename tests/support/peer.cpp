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
    if (tls_) {
        sendEncrypted(bytes);
    } else {
        while (!bytes.empty()) {
            const std::size_t sent = sendPart(bytes);
            bytes.remove_prefix(sent);
            countSent(sent);
        }
    }
    if (cut) {
        limit.ending == Ending::Reset ? reset() : close();
    }
}

void Peer::sendEncrypted(std::string_view text) {
    const std::size_t recordBytes = tls_->options().recordBytes;
    while (!text.empty()) {
        const std::string_view record = text.substr(0, recordBytes == 0 ? text.size() : recordBytes);
        tls_->write(record);
        sendInClear(tls_->bytesForNetwork());
        countSent(record.size());
        text.remove_prefix(record.size());
    }
}

void Peer::sendInClear(std::string_view bytes) {
    while (!bytes.empty()) {
        bytes.remove_prefix(sendPart(bytes));
    }
}

/** Sends what the socket takes now, or waits until it takes something. */
std::size_t Peer::sendPart(std::string_view bytes) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
        return static_cast<std::size_t>(sent);
    }
    if (!wouldBlock()) {
        throw ConversationEnded{};
    }
    server_.waitForSocket(socket_, POLLOUT);
    return 0;
}

void Peer::countSent(std::size_t bytes) {
    sentHere_ += bytes;
    server_.countSent(bytes);
}

void Peer::beginTls(const TlsIdentity& identity) {
    tls_ = std::make_unique<TlsLayer>(identity);
    tls_->takeFromNetwork(std::exchange(input_, {}));
    std::size_t flight = 0;
    for (;;) {
        const TlsLayer::Handshake state = tls_->shakeHands();
        server_.rememberTls(connection_, tls_->seen());
        const std::string bytes = tls_->bytesForNetwork();
        if (!bytes.empty()) {
            sendFlight(bytes, flight++);
        }
        if (state == TlsLayer::Handshake::Failed) {
            handshakeFailed_ = true;
            close();
        }
        if (state == TlsLayer::Handshake::Done) {
            // The client's first text may have come along with the end of its handshake.
            input_ = tls_->read();
            return;
        }
        server_.waitForSocket(socket_, POLLIN);
        const std::optional<std::string> received = receive();
        if (!received) {
            throw ConversationEnded{};
        }
        tls_->takeFromNetwork(*received);
    }
}

void Peer::sendFlight(std::string_view bytes, std::size_t flight) {
    const HandshakeFault& fault = tls_->options().fault;
    if (fault.kind == HandshakeFault::Kind::None || flight != fault.flights) {
        sendInClear(bytes);
        return;
    }
    handshakeFailed_ = true;
    sendInClear(bytes.substr(0, fault.bytes));
    switch (fault.kind) {
    case HandshakeFault::Kind::Reset:
        reset();
    case HandshakeFault::Kind::Garbage:
        sendInClear("* this is what nobody who begins a handshake would say\r\n");
        break;
    case HandshakeFault::Kind::Silence:
        holdSilent();
        break;
    default:
        break;
    }
    close();
}

/** What has come, which may be nothing; no value once the client has gone. */
std::optional<std::string> Peer::receive() {
    std::array<char, 16384> bytes{};
    const ssize_t received = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (received > 0) {
        return std::string(bytes.data(), static_cast<std::size_t>(received));
    }
    return received < 0 && wouldBlock() ? std::optional(std::string()) : std::nullopt;
}

/** False once the client has gone. */
bool Peer::readSome() {
    const std::optional<std::string> received = receive();
    if (!received || handshakeFailed_) {
        return received.has_value();
    }
    if (!tls_) {
        input_ += *received;
        return true;
    }
    tls_->takeFromNetwork(*received);
    input_ += tls_->read();
    sendInClear(tls_->bytesForNetwork());
    return !tls_->isOver();
}

std::string Peer::readLine() {
    std::string line = takeLine();
    server_.remember(connection_, line);
    return line;
}

std::string Peer::readCommandOfOld() {
    std::string line = takeLine();
    while (line == "CAPA") {
        constexpr std::string_view refusal = "-ERR\r\n";
        if (tls_) {
            tls_->write(refusal);
        }
        sendInClear(tls_ ? tls_->bytesForNetwork() : std::string(refusal));
        line = takeLine();
    }
    server_.remember(connection_, line);
    return line;
}

void Peer::awaitBytes() {
    while (input_.empty()) {
        server_.waitForSocket(socket_, POLLIN);
        if (!readSome()) {
            throw ConversationEnded{};
        }
    }
}

std::string Peer::takeLine() {
    for (;;) {
        const std::size_t lineFeed = input_.find('\n');
        if (lineFeed != std::string::npos) {
            std::string line = input_.substr(0, lineFeed);
            input_.erase(0, lineFeed + 1);
            if (line.ends_with('\r')) {
                line.pop_back();
            }
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
    if (tls_ && !handshakeFailed_) {
        tls_->endText();
        sendInClear(tls_->bytesForNetwork());
    }
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

Conversation overTls(TlsIdentity identity, Conversation conversation) {
    return [identity = std::move(identity), conversation = std::move(conversation)](Peer& peer) {
        peer.beginTls(identity);
        conversation(peer);
    };
}

} // namespace support
