#include "tests/support/inetd_pop3_server.h"

#include <QProcess>

#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <fstream>
#include <netinet/in.h>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace support {

namespace {
/** Some servers serve no one with the superuser's number. */
constexpr uid_t kBob = 65534;
constexpr const char* kPopauth = "/usr/bin/popauth";

const char* pathOf(InetdPop3Server::Program program) {
    switch (program) {
    case InetdPop3Server::Program::Popa3d:
        return "/usr/sbin/popa3d";
    case InetdPop3Server::Program::SolidPop3d:
        return "/usr/sbin/solid-pop3d";
    default:
        return "/usr/sbin/pop3d";
    }
}

/** The command line, which ends in nullptr. The path of the configuration has to outlive it. */
std::vector<const char*> commandOf(InetdPop3Server::Program program, const std::string& configuration) {
    if (program == InetdPop3Server::Program::MailutilsPop3d) {
        return {pathOf(program), "--inetd", "--config-file", configuration.c_str(), nullptr};
    }
    return {pathOf(program), nullptr};
}

/** What a file of the test's stands for, in the sight of the server. */
struct StandIn {
    std::string file;
    const char* place;
};

/** Lets this process see the files in the places; what other processes see stays as it is. */
bool takePlaces(const std::vector<StandIn>& standIns) {
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        return false;
    }
    for (const StandIn& standIn : standIns) {
        if (mount(standIn.file.c_str(), standIn.place, nullptr, MS_BIND, nullptr) != 0) {
            return false;
        }
    }
    return true;
}

/** Starts the program for each connection, until the process is killed. */
[[noreturn]] void serve(int listener, const std::vector<const char*>& command) {
    // Nobody waits for the programs.
    std::signal(SIGCHLD, SIG_IGN);
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection >= 0 && fork() == 0) {
            std::signal(SIGCHLD, SIG_DFL);
            dup2(connection, STDIN_FILENO);
            dup2(connection, STDOUT_FILENO);
            close(connection);
            close(listener);
            execv(command.front(), const_cast<char* const*>(command.data()));
            _exit(127);
        }
        close(connection);
    }
}

/** A listening socket on a free port, and that port. */
std::pair<int, std::uint16_t> listenSomewhere() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, generic, length) != 0 || listen(listener, SOMAXCONN) != 0 ||
        getsockname(listener, generic, &length) != 0) {
        close(listener);
        throw std::runtime_error("no free port");
    }
    return {listener, ntohs(address.sin_port)};
}

/** Whether another process may have places of its own here; containers often forbid it. */
bool mayTakePlaces() {
    const pid_t process = fork();
    if (process == 0) {
        _exit(takePlaces({}) ? 0 : 1);
    }
    int status = 1;
    return process > 0 && waitpid(process, &status, 0) == process && status == 0;
}

std::string contentOf(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
} // namespace

std::string InetdPop3Server::whyUnavailable(Program program) {
    if (access(pathOf(program), X_OK) != 0 ||
        (program == Program::MailutilsPop3d && access(kPopauth, X_OK) != 0)) {
        return std::string(pathOf(program)) + " is not installed on this computer.";
    }
    return geteuid() == 0 && mayTakePlaces() ? ""
                                             : "Only the superuser can show a server other users and mail.";
}

InetdPop3Server::InetdPop3Server(Program program) {
    makeAccount();
    makeSecret(program);
    start(program);
}

InetdPop3Server::~InetdPop3Server() {
    // The whole group: a session may be open.
    kill(-process_, SIGKILL);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

void InetdPop3Server::makeAccount() const {
    // The home folder lies where the account's own rights suffice to reach it.
    folder_.write("passwd", contentOf("/etc/passwd") + "bob:x:" + std::to_string(kBob) + ':' +
                                std::to_string(kBob) + "::/var/mail/home:/bin/sh\n");
    // "secret", as crypt(3) keeps it.
    folder_.write("shadow", "bob:$6$brindlewake$H49ObTE8953BmaqP64xQ1yf6ye.FyYEwr82OSs8KwyIw56LJtnQchewtAv."
                            "gANqD0ChSPtHW3pWhpzDqkyV2a.:19000:0:99999:7:::\n");
    std::filesystem::create_directories(folder_.path("mail/home"));
    folder_.write("mail/bob", "");
    for (const char* name : {"mail", "mail/bob", "mail/home"}) {
        if (chown(folder_.path(name).c_str(), kBob, kBob) != 0) {
            throw std::runtime_error("cannot give the mail folder away");
        }
    }
    std::filesystem::permissions(folder_.path("mail/bob"),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

/** Gives the account a secret for APOP, where the server greets with a timestamp. */
void InetdPop3Server::makeSecret(Program program) const {
    if (program == Program::SolidPop3d) {
        // "secret" with all bits turned over, in the manner of that server.
        folder_.write("mail/home/.spop3d", "APOPSecret 8c9a9c8d9a8b\n");
        if (chown(folder_.path("mail/home/.spop3d").c_str(), kBob, kBob) != 0) {
            throw std::runtime_error("cannot give the secret away");
        }
    } else if (program == Program::MailutilsPop3d) {
        const QString secrets = folder_.qtPath("secrets.db");
        folder_.write("conf", "apop-database-file \"" + secrets.toStdString() + "\";\n");
        if (QProcess::execute(QString::fromLatin1(kPopauth),
                              {QStringLiteral("--add"), QStringLiteral("--user"), QStringLiteral("bob"),
                               QStringLiteral("--password"), QStringLiteral("secret"),
                               QStringLiteral("--file"), secrets}) != 0) {
            throw std::runtime_error("popauth makes no secret");
        }
    }
}

void InetdPop3Server::start(Program program) {
    const std::string configuration = folder_.path("conf").string();
    const std::vector<const char*> command = commandOf(program, configuration);
    const std::vector<StandIn> standIns{{folder_.path("passwd").string(), "/etc/passwd"},
                                        {folder_.path("shadow").string(), "/etc/shadow"},
                                        {folder_.path("mail").string(), "/var/mail"}};
    const auto [listener, port] = listenSomewhere();
    port_ = port;
    std::array<int, 2> ready{};
    if (pipe(ready.data()) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before its death could be asked for.
        if (getppid() != parent || !takePlaces(standIns) || write(ready[1], "+", 1) != 1) {
            _exit(127);
        }
        close(ready[0]);
        close(ready[1]);
        serve(listener, command);
    }
    close(listener);
    close(ready[1]);
    char sign = 0;
    const bool isReady = read(ready[0], &sign, 1) == 1;
    close(ready[0]);
    if (!isReady) {
        throw std::runtime_error("the server cannot be shown other users and mail");
    }
}

QString InetdPop3Server::address() const {
    return QStringLiteral("127.0.0.1:%1").arg(port_);
}

void InetdPop3Server::deliver(std::string_view message) const {
    std::ofstream file(folder_.path("mail/bob"), std::ios::binary | std::ios::app);
    file << "From test@example.org Mon Mar  2 10:00:00 2026\n";
    for (const char character : message) {
        if (character != '\r') {
            file << character;
        }
    }
    file << '\n';
    file.close();
    if (!file) {
        throw std::runtime_error("cannot deliver");
    }
}

} // namespace support
