#pragma once

#include "mailserver/conversation.h"

#include <QSslConfiguration>
#include <QTcpServer>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace demo {

/** How a listener encrypts. */
struct Tls {
    QSslConfiguration configuration;
    /** From the first byte on; otherwise when a conversation wants it. */
    bool fromTheStart = false;
};

/** A server whose sockets can be encrypted, if it has TLS. */
class SocketServer : public QTcpServer {
  public:
    explicit SocketServer(std::optional<Tls> tls) : tls_(std::move(tls)) {}

    const std::optional<Tls>& tls() const noexcept { return tls_; }

  protected:
    void incomingConnection(qintptr descriptor) override;

  private:
    std::optional<Tls> tls_;
};

/** Listens on the loopback address and holds one conversation with each client. */
class Listener {
  public:
    /** Answers that a client has not taken, in bytes; while there are more, nothing is read from it. */
    static constexpr std::int64_t kMaximumWaitingBytes = 1LL << 20;
    /** What a client may have sent ahead, in bytes; also what is answered in one go. */
    static constexpr std::int64_t kReadBytes = 4LL << 10;

    using MakeConversation = std::function<std::unique_ptr<mailserver::Conversation>()>;

    /** Without TLS no conversation may want encryption. */
    explicit Listener(MakeConversation makeConversation, std::optional<Tls> tls = std::nullopt);

    /** Starts listening on 127.0.0.1; port 0 means any free one. False when it cannot. */
    bool start(std::uint16_t port) { return server_.listen(QHostAddress::LocalHost, port); }

    std::uint16_t port() const { return server_.serverPort(); }

    QString errorText() const { return server_.errorString(); }

  private:
    void converse();

    MakeConversation makeConversation_;
    SocketServer server_;
};

} // namespace demo
