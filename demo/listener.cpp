#include "demo/listener.h"

#include <QSslSocket>
#include <QTcpSocket>

#include <utility>

namespace demo {

namespace {

void send(QTcpSocket& socket, const std::string& text) {
    socket.write(text.data(), static_cast<qint64>(text.size()));
}

/** What the client has not taken yet, in bytes. */
qint64 bytesWaiting(const QTcpSocket& socket) {
    const auto* const tls = qobject_cast<const QSslSocket*>(&socket);
    return socket.bytesToWrite() + (tls == nullptr ? 0 : tls->encryptedBytesToWrite());
}

void beginTls(QTcpSocket& socket, mailserver::Conversation& conversation) {
    // What came in clear behind the command is no part of the handshake.
    socket.readAll();
    dynamic_cast<QSslSocket&>(socket).startServerEncryption();
    conversation.encrypted();
}

void answer(QTcpSocket& socket, mailserver::Conversation& conversation) {
    while (!conversation.isOver() && !conversation.wantsEncryption() && socket.bytesAvailable() > 0 &&
           bytesWaiting(socket) < Listener::kMaximumWaitingBytes) {
        send(socket, conversation.receive(socket.read(Listener::kReadBytes).toStdString()));
    }
    if (conversation.wantsEncryption()) {
        beginTls(socket, conversation);
    }
    if (conversation.isOver()) {
        socket.disconnectFromHost();
    }
}

} // namespace

void SocketServer::incomingConnection(qintptr descriptor) {
    if (!tls_) {
        QTcpServer::incomingConnection(descriptor);
        return;
    }
    auto* const socket = new QSslSocket(this);
    socket->setSslConfiguration(tls_->configuration);
    socket->setSocketDescriptor(descriptor);
    // Whoever speaks no TLS is not talked to any further. A client that has gone may have left its last
    // bytes.
    QObject::connect(socket, &QAbstractSocket::errorOccurred, socket,
                     [socket](QAbstractSocket::SocketError error) {
                         if (error != QAbstractSocket::RemoteHostClosedError) {
                             socket->abort();
                         }
                     });
    addPendingConnection(socket);
}

Listener::Listener(MakeConversation makeConversation, std::optional<Tls> tls)
    : makeConversation_(std::move(makeConversation)), server_(std::move(tls)) {
    QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { converse(); });
}

void Listener::converse() {
    while (QTcpSocket* const socket = server_.nextPendingConnection()) {
        const std::shared_ptr<mailserver::Conversation> conversation = makeConversation_();
        const auto answerWaiting = [socket, conversation] { answer(*socket, *conversation); };
        socket->setReadBufferSize(kReadBytes);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, answerWaiting);
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, answerWaiting);
        if (const auto* const tls = qobject_cast<QSslSocket*>(socket)) {
            QObject::connect(tls, &QSslSocket::encryptedBytesWritten, socket, answerWaiting);
        }
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (server_.tls() && server_.tls()->fromTheStart) {
            beginTls(*socket, *conversation);
        }
        send(*socket, conversation->greeting());
    }
}

} // namespace demo
