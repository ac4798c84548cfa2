#include "bench/delayed_listener.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <ctime>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace bench {

namespace {
constexpr std::size_t kReadBytes = 256U << 10U;

int mustSucceed(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

timespec asTimespec(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return {.tv_sec = seconds.count(), .tv_nsec = (time - seconds).count()};
}

/** False when the peer is gone. */
bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}
} // namespace

DelayedListener::DelayedListener(MakeConversation makeConversation, std::chrono::milliseconds delay,
                                 Ended ended, const char* host)
    : makeConversation_(std::move(makeConversation)),
      delay_(delay),
      ended_(std::move(ended)),
      listening_(mustSucceed(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")),
      buffer_(kReadBytes, '\0') {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    if (inet_pton(AF_INET, host, &address.sin_addr) != 1) {
        throw std::system_error(EINVAL, std::generic_category(), host);
    }
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    mustSucceed(bind(listening_.number(), plain, size), "bind");
    mustSucceed(listen(listening_.number(), SOMAXCONN), "listen");
    mustSucceed(getsockname(listening_.number(), plain, &size), "getsockname");
    port_ = ntohs(address.sin_port);
}

void DelayedListener::serve() {
    std::vector<pollfd> watched;
    for (;;) {
        watched.assign({{STDIN_FILENO, POLLIN, 0}, {listening_.number(), POLLIN, 0}});
        for (const Session& session : sessions_) {
            watched.push_back({session.connection.number(), POLLIN, 0});
        }
        const std::chrono::nanoseconds wait = untilNextAnswer();
        const timespec limit = asTimespec(wait);
        const bool answerWaits = wait != std::chrono::nanoseconds::max();
        mustSucceed(ppoll(watched.data(), watched.size(), answerWaits ? &limit : nullptr, nullptr), "ppoll");
        if (watched[0].revents != 0) {
            return;
        }
        auto events = watched.begin() + 2;
        for (Session& session : sessions_) {
            if ((events++)->revents != 0) {
                receive(session);
            }
            sendDue(session);
        }
        removeEnded();
        if (watched[1].revents != 0) {
            accept();
        }
    }
}

std::chrono::nanoseconds DelayedListener::untilNextAnswer() const {
    auto wait = std::chrono::nanoseconds::max();
    const Clock::time_point now = Clock::now();
    for (const Session& session : sessions_) {
        if (!session.answers.empty()) {
            const std::chrono::nanoseconds left = session.answers.front().due - now;
            wait = std::min(wait, std::max(left, std::chrono::nanoseconds::zero()));
        }
    }
    return wait;
}

void DelayedListener::accept() {
    const int socket = mustSucceed(accept4(listening_.number(), nullptr, nullptr, SOCK_CLOEXEC), "accept");
    Session& session = sessions_.emplace_back(socket, makeConversation_());
    const int on = 1;
    mustSucceed(setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on), "TCP_NODELAY");
    session.answers.push_back({Clock::now() + delay_, session.conversation->greeting()});
    sendDue(session);
}

void DelayedListener::receive(Session& session) {
    const ssize_t count = recv(session.connection.number(), buffer_.data(), buffer_.size(), 0);
    if (count <= 0) {
        session.lost = true;
        return;
    }
    std::string answer = session.conversation->receive({buffer_.data(), static_cast<std::size_t>(count)});
    if (!answer.empty()) {
        ++session.roundTrips;
        session.answers.push_back({Clock::now() + delay_, std::move(answer)});
    }
}

void DelayedListener::sendDue(Session& session) {
    while (!session.answers.empty() && session.answers.front().due <= Clock::now()) {
        session.lost = session.lost || !sendAll(session.connection.number(), session.answers.front().bytes);
        session.answers.pop_front();
    }
}

void DelayedListener::removeEnded() {
    for (auto session = sessions_.begin(); session != sessions_.end();) {
        if (!session->lost && (!session->conversation->isOver() || !session->answers.empty())) {
            ++session;
            continue;
        }
        const std::uint64_t roundTrips = session->roundTrips;
        // The connection ends first: what is done about the end keeps no client waiting.
        session = sessions_.erase(session);
        ended_(roundTrips);
    }
}

} // namespace bench
