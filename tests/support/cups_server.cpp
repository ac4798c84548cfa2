#include "tests/support/cups_server.h"

#include "tests/support/places.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace support {

namespace {
constexpr const char* kCupsExecutable = "/usr/sbin/cupsd";
constexpr std::chrono::seconds kCupsStartTime{20};

/** The printing library asks for its server's name once only, so all servers of a process share one. */
const std::string& socketPath() {
    static const TemporaryFolder folder(folderForServers());
    static const std::string path = folder.path("socket").string();
    return path;
}

bool answers() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath().c_str(), sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return connected;
}
} // namespace

std::string CupsServer::whyUnavailable() {
    return access(kCupsExecutable, X_OK) == 0 ? "" : "CUPS is not installed on this computer.";
}

void CupsServer::takeThePlaceOfTheSystem() {
    qputenv("CUPS_SERVER", socketPath().c_str());
    // A default printer of the person who runs the tests would go before that of the server.
    for (const char* name : {"PRINTER", "LPDEST"}) {
        qunsetenv(name);
    }
}

CupsServer::CupsServer(Queue queue) : folder_(folderForServers()) {
    takeThePlaceOfTheSystem();
    writeConfiguration(queue);
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.setStandardOutputFile(folder_.qtPath("output"));
    process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process_.start(QString::fromLatin1(kCupsExecutable),
                   {QStringLiteral("-f"), QStringLiteral("-c"), folder_.qtPath("cupsd.conf"),
                    QStringLiteral("-s"), folder_.qtPath("cups-files.conf")});
    const QDeadlineTimer deadline(kCupsStartTime);
    while (!answers()) {
        // Each look at the process is also the pause between two attempts to connect.
        if (process_.waitForFinished(10) || process_.state() == QProcess::NotRunning ||
            deadline.hasExpired()) {
            stop();
            throw std::runtime_error("CUPS does not start:\n" + log());
        }
    }
}

CupsServer::~CupsServer() {
    stop();
}

void CupsServer::stop() {
    process_.kill();
    process_.waitForFinished();
    std::filesystem::remove(socketPath());
}

void CupsServer::writeConfiguration(Queue queue) const {
    const std::string path = folder_.path().string();
    for (const char* name : {"root", "spool", "spool/tmp", "cache", "state", "programs"}) {
        std::filesystem::create_directory(folder_.path(name));
    }
    folder_.write("cupsd.conf", "Listen " + socketPath() +
                                    "\nBrowsing No\nDefaultAuthType None\nWebInterface No\n"
                                    "PreserveJobFiles Yes\n"
                                    "<Location />\n  Order allow,deny\n  Allow all\n</Location>\n"
                                    "<Policy default>\n  <Limit All>\n    Order deny,allow\n    Allow all\n"
                                    "  </Limit>\n</Policy>\n");
    folder_.write("cups-files.conf", "ServerRoot " + path + "/root\nRequestRoot " + path +
                                         "/spool\nTempDir " + path + "/spool/tmp\nCacheDir " + path +
                                         "/cache\nStateDir " + path + "/state\nServerBin " + path +
                                         "/programs\nAccessLog " + path + "/access\nErrorLog " + path +
                                         "/log\nPageLog " + path + "/pages\n");
    folder_.write("root/test.types", "application/pdf pdf string(0,%PDF)\n");
    if (queue != Queue::None) {
        const std::string accepting = queue == Queue::Accepting ? "Yes" : "No";
        folder_.write("root/printers.conf", "<DefaultPrinter test>\nInfo The printer of the tests\n"
                                            "DeviceURI file:///dev/null\nState Idle\nShared No\n"
                                            "JobSheets none none\nAccepting " +
                                                accepting + "\n</DefaultPrinter>\n");
    }
}

std::vector<std::string> CupsServer::documents() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path("spool"))) {
        const std::string name = entry.path().filename().string();
        if (name.front() == 'd') {
            names.push_back("spool/" + name);
        }
    }
    std::sort(names.begin(), names.end());
    std::vector<std::string> documents;
    documents.reserve(names.size());
    for (const std::string& name : names) {
        documents.push_back(folder_.read(name));
    }
    return documents;
}

std::string CupsServer::log() const {
    return folder_.readWhatIsThere({"output", "log"});
}

} // namespace support
