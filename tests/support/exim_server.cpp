#include "tests/support/exim_server.h"

#include "tests/support/loopback.h"
#include "tests/support/occurrences.h"

#include <QDeadlineTimer>

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace support {

namespace {
constexpr const char* kEximExecutable = "/usr/sbin/exim4";
/** Exim delivers no mail as the superuser. Dovecot's Maildir belongs to nobody then. */
constexpr uid_t kNobodyAtExim = 65534;
constexpr std::chrono::seconds kEximStartTime{20};
constexpr std::chrono::seconds kDeliveryTime{60};
// Exim reaches its folders through these descriptors, so that whoever it becomes need not be allowed to pass
// through the folders above. Low numbers would be taken for its own files.
constexpr int kOwnFolder = 200;
constexpr int kMaildir = 201;
constexpr const char* kConfigurationPath = "/proc/self/fd/200/conf";

bool openAs(int number, const char* folder) {
    const int descriptor = open(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
    return descriptor >= 0 && dup2(descriptor, number) == number;
}

/** The child's side of the start. */
[[noreturn]] void becomeExim(const char* ownFolder, const char* maildir, const char* output) {
    setpgid(0, 0);
    const int descriptor = open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor >= 0 && dup2(descriptor, STDOUT_FILENO) >= 0 && dup2(descriptor, STDERR_FILENO) >= 0 &&
        openAs(kOwnFolder, ownFolder) && openAs(kMaildir, maildir)) {
        execl(kEximExecutable, kEximExecutable, "-bdf", "-q1h", "-C", kConfigurationPath, nullptr);
    }
    _exit(127);
}

/** The guard's side: a signal at the parent's death would not outlive the start of a program like Exim,
 * which may change its user. */
[[noreturn]] void guardGroup(pid_t group, int pipeEnd) {
    // Of all that the test has open it keeps this one: another guard's pipe, or a connection, would not end.
    constexpr int kept = 3;
    const bool isAlone = dup2(pipeEnd, kept) == kept && close_range(kept + 1, ~0U, 0) == 0;
    char nothing = 0;
    while (isAlone && read(kept, &nothing, 1) < 0) {
    }
    kill(-group, SIGKILL);
    kill(group, SIGKILL);
    _exit(0);
}

/** To the user that Exim becomes. */
void giveAway(const std::filesystem::path& path) {
    if (geteuid() == 0 && chown(path.c_str(), kNobodyAtExim, kNobodyAtExim) != 0) {
        throw std::runtime_error("cannot give away " + path.string());
    }
}

std::string pathOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

std::size_t filesIn(const std::filesystem::path& folder, std::string_view ending = {}) {
    std::size_t count = 0;
    std::error_code gone; // Exim makes its folders when they are first needed.
    for (const auto& entry : std::filesystem::directory_iterator(folder, gone)) {
        count += entry.path().string().ends_with(ending) ? 1U : 0U;
    }
    return count;
}
} // namespace

std::string EximServer::whyUnavailable() {
    return access(kEximExecutable, X_OK) == 0 ? std::string() : "Exim is not installed on this computer.";
}

EximServer::EximServer(std::filesystem::path maildir) : EximServer(std::move(maildir), Options()) {}

EximServer::EximServer(std::filesystem::path maildir, Options options)
    : maildir_(std::move(maildir)), options_(std::move(options)) {
    for (const char* name : {"exim", "exim/spool"}) {
        std::filesystem::create_directory(folder_.path(name));
        giveAway(folder_.path(name));
    }
    if (options_.certificate) {
        const auto files = mailserver::writeTo(folder_.path("exim"), "certificate", *options_.certificate);
        giveAway(files.chain);
        giveAway(files.key);
    }
    messagesBefore_ = messagesInMaildir();
    // Somebody else may take a free port before Exim does.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (start()) {
            return;
        }
        stop();
    }
    throw std::runtime_error("Exim does not start:\n" + log());
}

EximServer::~EximServer() {
    stop();
}

std::string EximServer::configuration() const {
    const bool superuser = geteuid() == 0;
    return eximConfiguration(options_, {.folder = pathOf(kOwnFolder),
                                        .maildir = pathOf(kMaildir),
                                        .user = std::to_string(superuser ? kNobodyAtExim : geteuid()),
                                        .group = std::to_string(superuser ? kNobodyAtExim : getegid()),
                                        .port = port_,
                                        .tlsPort = tlsPort_,
                                        .sizeLimit = kSizeLimit});
}

bool EximServer::start() {
    port_ = freePort();
    tlsPort_ = freePort();
    folder_.write("exim/conf", configuration());
    const std::string ownFolder = folder_.path("exim").string();
    const std::string outputPath = folder_.path("output").string();
    process_ = fork();
    if (process_ == 0) {
        becomeExim(ownFolder.c_str(), maildir_.c_str(), outputPath.c_str());
    }
    std::array<int, 2> ends{};
    if (process_ < 0 || pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no process for Exim, or no pipe");
    }
    guardPipe_ = ends[1];
    guard_ = fork();
    if (guard_ == 0) {
        guardGroup(process_, ends[0]);
    }
    close(ends[0]);
    const QDeadlineTimer deadline(kEximStartTime);
    while (!deadline.hasExpired()) {
        if (greets(port_, "220 ", deadline)) {
            return true;
        }
        siginfo_t end{};
        // Its number stays taken until stop() has let go of the guard.
        if (waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            end.si_pid != 0) {
            return false;
        }
        poll(nullptr, 0, 10); // between two attempts to connect
    }
    return false;
}

void EximServer::stop() {
    if (guardPipe_ >= 0) {
        close(guardPipe_);
    }
    for (const pid_t child : {guard_, process_}) {
        if (child > 0) {
            waitpid(child, nullptr, 0);
        }
    }
    guardPipe_ = -1;
    guard_ = 0;
    process_ = 0;
}

QString EximServer::address() const {
    return QStringLiteral("127.0.0.1:%1").arg(port_);
}

QString EximServer::tlsAddress() const {
    return QStringLiteral("127.0.0.1:%1").arg(tlsPort_);
}

std::size_t EximServer::messagesInMaildir() const {
    return filesIn(maildir_ / "new") + filesIn(maildir_ / "cur");
}

std::size_t EximServer::messagesInQueue() const {
    // A message has a header file from the moment that its receipt is confirmed.
    return filesIn(folder_.path("exim/spool/input"), "-H");
}

std::size_t EximServer::awaitMessages(std::size_t count) const {
    const QDeadlineTimer deadline(kDeliveryTime);
    while ((messagesInQueue() > 0 || messagesInMaildir() < messagesBefore_ + count) &&
           !deadline.hasExpired()) {
        poll(nullptr, 0, 10); // between two looks
    }
    return messagesInMaildir() - messagesBefore_;
}

std::string EximServer::log() const {
    std::string text;
    for (const char* name : {"output", "exim/mainlog", "exim/rejectlog", "exim/paniclog"}) {
        if (std::filesystem::exists(folder_.path(name))) {
            text += folder_.read(name);
        }
    }
    return text;
}

std::size_t EximServer::refusedAttempts() const {
    return occurrences(folder_.readWhatIsThere({"exim/mainlog"}), " authenticator failed for ");
}

} // namespace support
