#include "tests/support/loopback.h"

#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace support {

namespace {
sockaddr_in loopbackPlace(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/** A socket, closed at the end. */
class Socket {
  public:
    Socket() : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

    ~Socket() { close(descriptor_); }

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};
} // namespace

std::uint16_t freePort() {
    const Socket listener;
    sockaddr_in address = loopbackPlace(0);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener.descriptor(), generic, length) != 0 ||
        getsockname(listener.descriptor(), generic, &length) != 0) {
        throw std::runtime_error("no free port");
    }
    return ntohs(address.sin_port);
}

bool takesConnections(std::uint16_t port) {
    const Socket client;
    const sockaddr_in address = loopbackPlace(port);
    return connect(client.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool greets(std::uint16_t port, std::string_view greeting, const QDeadlineTimer& deadline) {
    const Socket client;
    const sockaddr_in address = loopbackPlace(port);
    if (connect(client.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return false;
    }
    pollfd waiting{client.descriptor(), POLLIN, 0};
    if (poll(&waiting, 1, static_cast<int>(deadline.remainingTime())) != 1) {
        return false;
    }
    std::string start(greeting.size(), '\0');
    return recv(client.descriptor(), start.data(), start.size(), MSG_WAITALL) ==
               static_cast<ssize_t>(start.size()) &&
           start == greeting;
}

} // namespace support
