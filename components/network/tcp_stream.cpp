// Streams in clear. They are a library of their own, loaded at the first connection.

#include "components/network/socket_stream.h"

#include <QTcpSocket>

#include <memory>
#include <unistd.h>

namespace {
using transport::ClearStream;

class TcpStream : public network::SocketStream<ClearStream, QTcpSocket> {
  public:
    void open(const transport::ServerName& server) override {
        socket()->connectToHost(server.host, server.port);
    }

    State state() const override {
        if (socket() == nullptr || socket()->state() == QAbstractSocket::UnconnectedState) {
            return State::Closed;
        }
        return socket()->state() == QAbstractSocket::ConnectedState ? State::Open : State::Opening;
    }

    int takeDescriptor() override {
        if (state() != State::Open) {
            return -1;
        }
        const int descriptor = ::dup(static_cast<int>(socket()->socketDescriptor()));
        socket()->abort();
        return descriptor;
    }
};
} // namespace

extern "C" __attribute__((visibility("default"))) ClearStream* brindlewakeMakeTcpStream() {
    return std::make_unique<TcpStream>().release();
}
