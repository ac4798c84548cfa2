#include "demo/listener.h"

#include <QTcpSocket>

#include <utility>

namespace demo {

namespace {

void send(QTcpSocket& socket, const std::string& text) {
    socket.write(text.data(), static_cast<qint64>(text.size()));
}

void answer(QTcpSocket& socket, mailserver::Conversation& conversation) {
    while (!conversation.isOver() && socket.bytesAvailable() > 0 &&
           socket.bytesToWrite() < Listener::kMaximumWaitingBytes) {
        send(socket, conversation.receive(socket.read(Listener::kReadBytes).toStdString()));
    }
    if (conversation.isOver()) {
        socket.disconnectFromHost();
    }
}

} // namespace

Listener::Listener(MakeConversation makeConversation) : makeConversation_(std::move(makeConversation)) {
    QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { converse(); });
}

void Listener::converse() {
    while (QTcpSocket* const socket = server_.nextPendingConnection()) {
        const std::shared_ptr<mailserver::Conversation> conversation = makeConversation_();
        const auto answerWaiting = [socket, conversation] { answer(*socket, *conversation); };
        socket->setReadBufferSize(kReadBytes);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, answerWaiting);
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, answerWaiting);
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        send(*socket, conversation->greeting());
    }
}

} // namespace demo
