#include "platform/only_program.h"

#include "platform/runtime_error.h"

#include <QDeadlineTimer>
#include <QFile>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <string_view>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {
constexpr std::string_view kShown = "shown\n";
constexpr std::string_view kNotShown = "not shown\n";
constexpr const char* kLockEnding = ".lock";
constexpr std::size_t kMaximumRequestBytes = 4096;
/** A later start sends its request before it waits, so the first program hardly needs to wait for it. */
constexpr std::chrono::milliseconds kRequestTimeout{200};
constexpr std::chrono::milliseconds kBetweenTries{20};

/** A name that tells the current folder from all others on this computer. */
std::string nameOfCurrentFolder() {
    struct stat status {};

    if (::stat(".", &status) != 0) {
        throw RuntimeError(errors::PathFileAccess);
    }
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "folder-%llx-%llx",
                  static_cast<unsigned long long>(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino));
    return name.data();
}

/** Whether the system's list has a lock on this file (proc(5), /proc/locks). */
bool isLocked(const struct stat& file) {
    std::array<char, 64> place{};
    std::snprintf(place.data(), place.size(), "%02x:%02x:%llu ", major(file.st_dev), minor(file.st_dev),
                  static_cast<unsigned long long>(file.st_ino));
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("FLOCK") != std::string::npos && line.find(place.data()) != std::string::npos) {
            return true;
        }
    }
    return false;
}

FileDescriptor newSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

/** A socket's address may have about a hundred bytes, so the folder is named by its descriptor. */
sockaddr_un addressIn(const UserFolder& place, const std::string& name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", place.folder.number(),
                  name.c_str());
    return address;
}

bool isOwnProcess(const FileDescriptor& connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(connection.number(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

bool waitUntilReadable(const FileDescriptor& connection, const QDeadlineTimer& deadline) {
    pollfd waited{connection.number(), POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&waited, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

/** What the other side says, up to its first line end; nothing when none comes. */
std::optional<std::string> readLine(const FileDescriptor& connection, const QDeadlineTimer& deadline) {
    std::string line;
    while (line.size() < kMaximumRequestBytes && waitUntilReadable(connection, deadline)) {
        std::array<char, kMaximumRequestBytes> buffer{};
        const ssize_t bytes = ::recv(connection.number(), buffer.data(), buffer.size(), 0);
        if (bytes <= 0) {
            break;
        }
        line.append(buffer.data(), static_cast<std::size_t>(bytes));
        if (line.ends_with('\n')) {
            return line;
        }
    }
    return std::nullopt;
}

bool say(const FileDescriptor& connection, std::string_view line) {
    return ::send(connection.number(), line.data(), line.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(line.size());
}

/**
 * Makes the text a part of a request: short, and without control characters, which could end the line or
 * begin the next part.
 */
std::string part(std::string text) {
    constexpr std::size_t longest = 512;
    text.resize(std::min(text.size(), longest));
    for (char& byte : text) {
        if (static_cast<unsigned char>(byte) < ' ') {
            byte = ' ';
        }
    }
    return text;
}

OnlyProgram::Request requestIn(std::string_view line) {
    line.remove_suffix(1);
    const std::size_t tab = line.find('\t');
    const std::string_view token = tab == std::string_view::npos ? std::string_view() : line.substr(tab + 1);
    return {std::string(line.substr(0, tab)), std::string(token)};
}
} // namespace

OnlyProgram::Start OnlyProgram::start(const Request& request, std::chrono::milliseconds timeout) {
    const int error = errorNumberOf([this] {
        name_ = nameOfCurrentFolder();
        place_ = runtimeFolder();
    });
    if (error != errors::None) {
        return Start::First;
    }
    const QDeadlineTimer deadline(timeout);
    // The other program may not listen yet, or may be about to end, so it is asked again.
    while (!takeLock()) {
        const auto remaining = std::chrono::milliseconds(deadline.remainingTime());
        if (const auto answered = ask(request, remaining)) {
            return *answered;
        }
        if (deadline.hasExpired()) {
            return Start::NotShown;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    if (lock_.isOpen()) {
        listen();
    }
    return Start::First;
}

bool OnlyProgram::worksHere() {
    const QByteArray name = QByteArray::fromStdString(nameOfCurrentFolder() + kLockEnding);
    for (const QString& folder : runtimeFolderPaths() + QStringList{stateFolderPath()}) {
        struct stat status {};

        if (::stat(QFile::encodeName(folder + u'/') + name, &status) == 0 && isLocked(status)) {
            return true;
        }
    }
    return false;
}

/** False when another program has the lock; true also where no lock can be had. */
bool OnlyProgram::takeLock() {
    FileDescriptor lock(::openat(place_->folder.number(), (name_ + kLockEnding).c_str(),
                                 O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!lock.isOpen()) {
        return true;
    }
    if (::flock(lock.number(), LOCK_EX | LOCK_NB) != 0) {
        return errno != EWOULDBLOCK;
    }
    // The sticky bit keeps the system from cleaning the file away while it is in use.
    static_cast<void>(!::fchmod(lock.number(), S_ISVTX | S_IRUSR | S_IWUSR));
    lock_ = std::move(lock);
    return true;
}

void OnlyProgram::listen() {
    const std::string name = name_ + ".socket";
    // Only the program that has the lock uses this name, so a socket that is there was left by one that has
    // ended.
    ::unlinkat(place_->folder.number(), name.c_str(), 0);
    FileDescriptor listener = newSocket();
    const sockaddr_un address = addressIn(*place_, name);
    constexpr int waitingAtMost = 8;
    if (listener.isOpen() &&
        ::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(listener.number(), waitingAtMost) == 0) {
        listener_ = std::move(listener);
    }
}

/** Nothing when the other program cannot be reached, or not yet. */
std::optional<OnlyProgram::Start> OnlyProgram::ask(const Request& request,
                                                   std::chrono::milliseconds timeout) const {
    const FileDescriptor connection = newSocket();
    const sockaddr_un address = addressIn(*place_, name_ + ".socket");
    const bool asked =
        connection.isOpen() &&
        ::connect(connection.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        isOwnProcess(connection) && say(connection, part(request.screen) + '\t' + part(request.token) + '\n');
    if (!asked) {
        return std::nullopt;
    }
    const auto answer = readLine(connection, QDeadlineTimer(timeout));
    if (!answer) {
        return std::nullopt;
    }
    return *answer == kShown ? Start::Shown : Start::NotShown;
}

void OnlyProgram::answer(const std::function<bool(const Request&)>& show) {
    const FileDescriptor connection(
        ::accept4(listener_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!connection.isOpen() || !isOwnProcess(connection)) {
        return;
    }
    if (const auto line = readLine(connection, QDeadlineTimer(kRequestTimeout))) {
        say(connection, show(requestIn(*line)) ? kShown : kNotShown);
    }
}

} // namespace platform
