#include "tests/support/server_state.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace support {

namespace {
void raiseEvent(int event) {
    const std::uint64_t one = 1;
    checked(static_cast<int>(::write(event, &one, sizeof(one))), "write");
}
} // namespace

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

int checked(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), call);
    }
    return result;
}

ServerState::ServerState()
    : stop_(checked(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd")),
      release_(checked(::eventfd(0, EFD_NONBLOCK | EFD_SEMAPHORE | EFD_CLOEXEC), "eventfd")) {}

void ServerState::stop() const {
    raiseEvent(stop_.get());
}

void ServerState::release() const {
    raiseEvent(release_.get());
}

bool ServerState::waitForClient(int listener) const {
    std::array<pollfd, 2> watched{{{listener, POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), -1);
    return watched[1].revents == 0;
}

ServerState::Wake ServerState::wait(int socket, short events, bool releasable,
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

void ServerState::setCut(Cut cut) {
    const std::scoped_lock lock(mutex_);
    cut_ = cut;
}

ServerState::Cut ServerState::cut() const {
    const std::scoped_lock lock(mutex_);
    return cut_;
}

std::size_t ServerState::countConnection() {
    const std::scoped_lock lock(mutex_);
    return connections_++;
}

void ServerState::countEnds() {
    const std::scoped_lock lock(mutex_);
    ended_ = connections_;
    changed_.notify_all();
}

void ServerState::remember(std::size_t connection, std::string line) {
    const std::scoped_lock lock(mutex_);
    lines_.push_back({connection, std::move(line)});
    changed_.notify_all();
}

void ServerState::countSent(std::size_t bytes) {
    const std::scoped_lock lock(mutex_);
    bytesSent_ += bytes;
}

std::vector<std::string> ServerState::commands() const {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> commands;
    for (const Line& line : lines_) {
        commands.push_back(line.text);
    }
    return commands;
}

std::vector<std::string> ServerState::commands(std::size_t connection) const {
    const std::scoped_lock lock(mutex_);
    std::vector<std::string> commands;
    for (const Line& line : lines_) {
        if (line.connection == connection) {
            commands.push_back(line.text);
        }
    }
    return commands;
}

void ServerState::rememberTls(std::size_t connection, const TlsSeen& seen) {
    const std::scoped_lock lock(mutex_);
    tls_[connection] = seen;
}

TlsSeen ServerState::tls(std::size_t connection) const {
    const std::scoped_lock lock(mutex_);
    const auto found = tls_.find(connection);
    return found == tls_.end() ? TlsSeen{} : found->second;
}

std::size_t ServerState::connections() const {
    const std::scoped_lock lock(mutex_);
    return connections_;
}

std::size_t ServerState::connectionsEnded() const {
    const std::scoped_lock lock(mutex_);
    return ended_;
}

std::size_t ServerState::bytesSent() const {
    const std::scoped_lock lock(mutex_);
    return bytesSent_;
}

bool ServerState::waitForEndOf(std::size_t connections) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTimeLimit, [&] { return ended_ >= connections; });
}

bool ServerState::waitForCommands(std::size_t lines) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTimeLimit, [&] { return lines_.size() >= lines; });
}

} // namespace support
