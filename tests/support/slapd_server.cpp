#include "tests/support/slapd_server.h"

#include "tests/support/loopback.h"

#include <QDeadlineTimer>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace support {

namespace {
constexpr const char* kExecutable = "/usr/sbin/slapd";
constexpr const char* kLoader = "/usr/sbin/slapadd";
constexpr std::chrono::seconds kStartTime{20};

/** The child's side of a start: becomes the program, bound to the life of the test. */
[[noreturn]] void become(char* const* arguments, const char* output, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int descriptor = open(output, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    // The parent may have died before its death could be asked for.
    if (getppid() == parent && descriptor >= 0 && dup2(descriptor, STDOUT_FILENO) >= 0 &&
        dup2(descriptor, STDERR_FILENO) >= 0) {
        execv(arguments[0], arguments);
    }
    _exit(127);
}

pid_t startProgram(std::vector<std::string> command, const std::string& output) {
    std::vector<char*> arguments;
    for (std::string& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        become(arguments.data(), output.c_str(), parent);
    }
    return child;
}

std::string urlOf(const char* scheme, std::uint16_t port) {
    return std::string(scheme) + "://127.0.0.1:" + std::to_string(port);
}
} // namespace

std::string person(const std::string& uid, const std::string& name, const std::string& mail,
                   const std::string& password, const std::string& lines) {
    return "dn: uid=" + uid + "," + kSlapdBase + "\nobjectClass: inetOrgPerson\nuid: " + uid +
           "\ncn: " + name + "\nsn: " + name + "\nmail: " + mail + "\n" +
           (password.empty() ? "" : "userPassword: " + password + "\n") + lines + "\n";
}

std::string persons(int first, int last) {
    std::string all;
    for (int number = first; number <= last; ++number) {
        const std::string digits = std::to_string(number);
        all += person("person" + digits, "Person " + digits, "person" + digits + "@example.org");
    }
    return all;
}

std::string SlapdServer::whyUnavailable() {
    return access(kExecutable, X_OK) == 0 && access(kLoader, X_OK) == 0
               ? std::string()
               : "slapd is not installed on this computer.";
}

SlapdServer::SlapdServer(SlapdOptions options) : options_(std::move(options)) {
    std::filesystem::create_directory(folder_.path("database"));
    if (options_.certificate) {
        mailserver::writeTo(folder_.path(), "certificate", *options_.certificate);
    }
    folder_.write("slapd.conf", configuration());
    folder_.write("entries.ldif", std::string("dn: ") + kSlapdBase +
                                      "\nobjectClass: dcObject\nobjectClass: organization\ndc: "
                                      "example\no: Example\n\n" +
                                      options_.entries);
    run({kLoader, "-q", "-f", folder_.path("slapd.conf").string(), "-l",
         folder_.path("entries.ldif").string()});
    // Somebody else may take a free port before slapd does.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (start()) {
            return;
        }
        kill();
    }
    throw std::runtime_error("slapd does not start:\n" + log());
}

SlapdServer::~SlapdServer() {
    kill();
}

std::string SlapdServer::configuration() const {
    const std::string path = folder_.path().string();
    std::string text;
    for (const char* schema : {"core", "cosine", "inetorgperson"}) {
        text += std::string("include /etc/ldap/schema/") + schema + ".schema\n";
    }
    text += "modulepath /usr/lib/ldap\nmoduleload back_mdb\n" + options_.serverLines;
    if (options_.certificate) {
        text += "TLSCertificateFile " + path + "/certificate.pem\nTLSCertificateKeyFile " + path +
                "/certificate.key\n";
    }
    return text + "database mdb\nmaxsize 16777216\nsuffix \"" + kSlapdBase + "\"\ndirectory " + path +
           "/database\n" + options_.databaseLines;
}

void SlapdServer::run(const std::vector<std::string>& command) const {
    int status = 0;
    const pid_t child = startProgram(command, folder_.path("log").string());
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error(command.front() + " fails:\n" + log());
    }
}

bool SlapdServer::start() {
    port_ = freePort();
    tlsPort_ = freePort();
    const std::string urls =
        urlOf("ldap", port_) + (options_.certificate ? ' ' + urlOf("ldaps", tlsPort_) : std::string());
    // The level "stats" also keeps the server in the foreground.
    process_ =
        startProgram({kExecutable, "-f", folder_.path("slapd.conf").string(), "-h", urls, "-d", "stats"},
                     folder_.path("log").string());
    if (process_ < 0) {
        throw std::runtime_error("no process for slapd");
    }
    const QDeadlineTimer deadline(kStartTime);
    while (!deadline.hasExpired()) {
        if (takesConnections(port_)) {
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

void SlapdServer::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    process_ = 0;
}

void SlapdServer::freeze() const {
    ::kill(process_, SIGSTOP);
}

QString SlapdServer::address() const {
    return QStringLiteral("127.0.0.1:%1").arg(port_);
}

QString SlapdServer::tlsAddress() const {
    return QStringLiteral("127.0.0.1:%1").arg(tlsPort_);
}

std::string SlapdServer::log() const {
    return folder_.readWhatIsThere({"log"});
}

} // namespace support
