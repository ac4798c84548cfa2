#pragma once

#include "mailserver/conversation.h"

#include <QTcpServer>

#include <cstdint>
#include <functional>
#include <memory>

namespace demo {

/** Listens on the loopback address and holds one conversation with each client. */
class Listener {
  public:
    /** Answers that a client has not taken, in bytes; while there are more, nothing is read from it. */
    static constexpr std::int64_t kMaximumWaitingBytes = 1LL << 20;
    /** What a client may have sent ahead, in bytes; also what is answered in one go. */
    static constexpr std::int64_t kReadBytes = 4LL << 10;

    using MakeConversation = std::function<std::unique_ptr<mailserver::Conversation>()>;

    explicit Listener(MakeConversation makeConversation);

    /** Starts listening on 127.0.0.1; port 0 means any free one. False when it cannot. */
    bool start(std::uint16_t port) { return server_.listen(QHostAddress::LocalHost, port); }

    std::uint16_t port() const { return server_.serverPort(); }

    QString errorText() const { return server_.errorString(); }

  private:
    void converse();

    MakeConversation makeConversation_;
    QTcpServer server_;
};

} // namespace demo
