#include "tests/support/dovecot_server.h"

#include "tests/support/loopback.h"
#include "tests/support/occurrences.h"
#include "tests/support/places.h"

#include <QDeadlineTimer>

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <map>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace support {

namespace {
constexpr const char* kDovecotExecutable = "/usr/sbin/dovecot";
constexpr const char* kPop3Program = "/usr/lib/dovecot/pop3";
/** The superuser's mail folder belongs to nobody, because Dovecot reads no mail as the superuser. */
constexpr uid_t kNobody = 65534;
constexpr std::chrono::seconds kDovecotStartTime{20};
constexpr std::chrono::seconds kLogTime{20};

bool isSuperuser() {
    return geteuid() == 0;
}

/** How many connections have ended without a log-on, or with one, as the log says. */
std::size_t endedConnections(const std::string& log) {
    return occurrences(log, "pop3-login: Info: Login: ") +
           occurrences(log, "pop3-login: Info: Disconnected: ");
}

/** The child's side of the start: becomes Dovecot, bound to the life of the test. */
[[noreturn]] void becomeDovecot(const char* configuration, const char* output, pid_t parent) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int descriptor = open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    // The parent may have died before its death could be asked for.
    if (getppid() == parent && descriptor >= 0 && dup2(descriptor, STDOUT_FILENO) >= 0 &&
        dup2(descriptor, STDERR_FILENO) >= 0) {
        execl(kDovecotExecutable, kDovecotExecutable, "-F", "-c", configuration, nullptr);
    }
    _exit(127);
}
} // namespace

std::string DovecotServer::whyUnavailable() {
    if (access(kDovecotExecutable, X_OK) != 0 || access(kPop3Program, X_OK) != 0) {
        return "Dovecot with POP3 is not installed on this computer.";
    }
    if (getpwuid(geteuid()) == nullptr || getgrgid(getegid()) == nullptr) {
        return "Dovecot must know the user who runs it by a name, and this user has none.";
    }
    return {};
}

DovecotServer::DovecotServer(const Account& account) : DovecotServer(Options{.account = account}) {}

DovecotServer::DovecotServer(Options options) : options_(std::move(options)), folder_(folderForServers()) {
    makeMailFolder();
    if (options_.certificate) {
        mailserver::writeTo(folder_.path(), "certificate", *options_.certificate);
    }
    // Somebody else may take a free port before Dovecot does.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (start()) {
            return;
        }
        stop();
    }
    throw std::runtime_error("Dovecot does not start:\n" + log());
}

DovecotServer::~DovecotServer() {
    stop();
}

void DovecotServer::makeMailFolder() const {
    for (const char* name : {"box", "box/home", "box/mail", "box/mail/cur", "box/mail/new", "box/mail/tmp"}) {
        std::filesystem::create_directory(folder_.path(name));
        if (isSuperuser() && chown(folder_.path(name).c_str(), kNobody, kNobody) != 0) {
            throw std::runtime_error("cannot give the mail folder away");
        }
    }
}

std::string DovecotServer::host() const {
    return options_.takesPasswordInClear ? "127.0.0.1" : "127.0.0.2";
}

std::string DovecotServer::encryption() const {
    if (!options_.certificate) {
        return "ssl = no\n";
    }
    const std::string certificate = folder_.path("certificate").string();
    return "ssl = yes\nssl_cert = <" + certificate + ".pem\nssl_key = <" + certificate + ".key\n";
}

std::string DovecotServer::configuration() const {
    const std::string path = folder_.path().string();
    const std::string box = path + "/box";
    const std::string disabled = options_.takesPasswordInClear ? "no" : "yes";
    const std::string addresses = options_.takesPasswordInClear ? host() : "127.0.0.1 " + host();
    std::string text = "base_dir = " + path + "/run\nstate_dir = " + path + "/run\nlog_path = " + path +
                       "/log\n"
                       "protocols = pop3\nlisten = 127.0.0.1\n" +
                       encryption() + "disable_plaintext_auth = " + disabled +
                       "\nauth_mechanisms = " + options_.mechanisms +
                       "\nauth_failure_delay = 0\nauth_username_chars =\n"
                       "auth_username_format = %u\n"
                       "passdb {\n  driver = passwd-file\n  args = scheme=PLAIN username_format=%u " +
                       path +
                       "/users\n}\n"
                       "service pop3-login {\n  inet_listener pop3 {\n    address = " +
                       addresses + "\n    port = " + std::to_string(port_) +
                       "\n  }\n  inet_listener pop3s {\n    address = " + addresses +
                       "\n    ssl = yes\n    port = " + std::to_string(tlsPort_) +
                       "\n  }\n}\n"
                       // Failed log-ons are not made to wait.
                       "service anvil {\n  unix_listener anvil-auth-penalty {\n    mode = 0\n  }\n}\n";
    if (isSuperuser()) {
        // Log-ons may not be served by the superuser, nor mail be read by it. Both are locked into their
        // folders before they give up its rights, so it does not matter who may pass through the folders
        // above.
        text += "default_internal_user = root\ndefault_internal_group = root\nvalid_chroot_dirs = " + box +
                "\nmail_location = maildir:/mail\nuserdb {\n  driver = static\n  args = uid=65534 gid=65534 "
                "home=/home chroot=" +
                box + "\n}\n";
    } else {
        const std::string user = getpwuid(geteuid())->pw_name;
        const std::string group = getgrgid(getegid())->gr_name;
        text += "default_internal_user = " + user + "\ndefault_internal_group = " + group +
                "\ndefault_login_user = " + user + "\nmail_location = maildir:" + box +
                "/mail\nuserdb {\n  driver = static\n  args = allow_all_users=yes home=" + box +
                "/home\n}\n"
                "service pop3-login {\n  chroot =\n}\nservice anvil {\n  chroot =\n}\n";
    }
    return text;
}

bool DovecotServer::start() {
    port_ = freePort();
    // 0 stands for no listener.
    tlsPort_ = options_.certificate ? freePort() : std::uint16_t{0};
    std::filesystem::create_directory(folder_.path("run"));
    folder_.write("users", options_.account.user + ":{PLAIN}" + options_.account.password + "\n");
    const std::string configurationPath = folder_.write("conf", configuration()).string();
    const std::string outputPath = folder_.path("output").string();
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        becomeDovecot(configurationPath.c_str(), outputPath.c_str(), parent);
    }
    const QDeadlineTimer deadline(kDovecotStartTime);
    while (!deadline.hasExpired()) {
        if (greets(port_, "+OK", deadline)) {
            return true;
        }
        if (waitpid(process_, nullptr, WNOHANG) != 0) {
            process_ = 0;
            return false;
        }
        poll(nullptr, 0, 10); // between two attempts to connect
    }
    return false;
}

void DovecotServer::stop() {
    if (process_ > 0) {
        // The whole group at once: Dovecot's own ending takes a second, and nothing is left to save.
        kill(-process_, SIGKILL);
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    process_ = 0;
}

QString DovecotServer::address() const {
    return QStringLiteral("%1:%2").arg(QString::fromStdString(host())).arg(port_);
}

QString DovecotServer::tlsAddress() const {
    return QStringLiteral("%1:%2").arg(QString::fromStdString(host())).arg(tlsPort_);
}

void DovecotServer::deliver(std::string_view message) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%010d.M%06dP1.test", 1'700'000'000 + delivered_, delivered_);
    ++delivered_;
    const std::filesystem::path written = folder_.write(std::string("box/mail/tmp/") + name.data(), message);
    if (isSuperuser() && chown(written.c_str(), kNobody, kNobody) != 0) {
        throw std::runtime_error("cannot give the message away");
    }
    std::filesystem::rename(written, folder_.path("box/mail/new") / name.data());
}

std::filesystem::path DovecotServer::maildir() const {
    return folder_.path("box/mail");
}

std::vector<std::string> DovecotServer::messages() const {
    std::map<std::string, std::string> messageByName;
    for (const std::string place : {"box/mail/new/", "box/mail/cur/"}) {
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path(place))) {
            const std::string name = entry.path().filename().string();
            messageByName[name] = folder_.read(place + name);
        }
    }
    std::vector<std::string> messages;
    messages.reserve(messageByName.size());
    for (auto& [name, message] : messageByName) {
        messages.push_back(std::move(message));
    }
    return messages;
}

std::string DovecotServer::log() const {
    return folder_.readWhatIsThere({"output", "log"});
}

std::size_t DovecotServer::refusedAttempts(std::size_t connections) const {
    // The start has one of its own, to see the greeting.
    const std::size_t ended = connections + 1;
    const QDeadlineTimer deadline(kLogTime);
    while (endedConnections(log()) < ended) {
        if (deadline.hasExpired()) {
            throw std::runtime_error("the connections do not end:\n" + log());
        }
        poll(nullptr, 0, 10); // between two looks
    }
    constexpr std::string_view failed = "(auth failed, ";
    std::size_t attempts = 0;
    const std::string text = log();
    for (std::size_t at = text.find(failed); at != std::string::npos; at = text.find(failed, at + 1)) {
        attempts += std::strtoul(text.c_str() + at + failed.size(), nullptr, 10);
    }
    return attempts;
}

} // namespace support
