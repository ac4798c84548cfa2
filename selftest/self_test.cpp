// The library's one function: which steps there are, and in which process each is done.

#include "app/self_test.h"

#include "selftest/hands.h"
#include "selftest/local_servers.h"
#include "selftest/outcome_lines.h"
#include "selftest/private_folder.h"
#include "selftest/round.h"
#include "selftest/sample_mail.h"
#include "selftest/watched_process.h"

#include <QApplication>
#include <QFile>
#include <QGuiApplication>
#include <QTimer>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <system_error>

namespace selftest {

namespace {
using Clock = std::chrono::steady_clock;

/** For the whole test. A slow computer takes a few seconds. */
constexpr std::chrono::seconds kTimeLimit{60};

void write(const char* name, const QByteArray& bytes) {
    QFile file{QLatin1String(name)};
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush(),
            QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
}

void copyAsset(const char* name) {
    QFile asset(QStringLiteral(":/selftest/") + QLatin1String(name));
    require(asset.open(QIODevice::ReadOnly), asset.fileName());
    write(name, asset.readAll());
}

void writeSettings(const LocalServers& servers) {
    const std::string text = "ShowSetup=no\r\n"
                             "[MailServer Info]\r\n"
                             "POPServer=" +
                             servers.popServer() +
                             "\r\n"
                             "SMTPServer=" +
                             servers.smtpServer() +
                             "\r\n"
                             "DomainName=example.org\r\n"
                             "[Institution Properties]\r\n"
                             "Institution=Self-Test\r\n"
                             "[Application Options]\r\n"
                             "PlayWav=no\r\n"
                             "ShowDatabase=no\r\n"
                             "SendAttachments=yes\r\n"
                             "SaveDirectory=C:\\SAVED\\\r\n"
                             "AllowPrinting=yes\r\n"
                             "SaveCopy=no\r\n"
                             "ShowGetMail=yes\r\n"
                             "GetMailEvery=0\r\n"
                             "LDAPServer=directory.example.org\r\n"
                             "LDAPSearchBase=c=us\r\n"
                             "AddressLookup=Personal Address Book\r\n";
    write("tolk.ini", QByteArray::fromStdString(text));
}

QtMessageHandler previousHandler = nullptr;

/** Passes on what Qt complains of, but for what no window out of sight can do. */
void tellUnlessOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (!text.startsWith(QLatin1String("This plugin does not support "))) {
        previousHandler(type, context, text);
    }
}

/** What makes one round; runs in a process of its own, which it does not leave. */
int goRound(const SelfTestOrder& order, const std::filesystem::path& folder, Encrypted encrypted,
            Teller& teller) {
    const bool isEncrypted = encrypted == Encrypted::Yes;
    teller.begin(isEncrypted ? "start the program again" : "start the program");
    const Places places(folder);
    moveInto(places);
    // The windows stay out of sight unless -platform says otherwise; dialogs are Qt's own, which can be
    // found.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    previousHandler = qInstallMessageHandler(tellUnlessOffscreen);
    copyAsset("tolk.jpg");
    copyAsset("Gotmail.wav");
    if (isEncrypted) {
        qputenv("SSL_CERT_FILE", QFile::encodeName(QString::fromStdString(places.root)));
    }
    std::optional<LocalServers> servers;
    std::optional<Round> round;
    return order.showWindows([&] {
        teller.end(Outcome::Ok);
        teller.begin(isEncrypted ? "start servers that encrypt" : "start servers on this computer");
        servers.emplace(waitingMessages(), encrypted, places.root);
        writeSettings(*servers);
        teller.end(Outcome::Ok);
        round.emplace(isEncrypted ? encryptedRound() : wholeRound(),
                      isEncrypted ? "end the program again" : "end the program", teller, order, places,
                      *servers);
        // By then the windows are there, and their event loop runs.
        QTimer::singleShot(0, [&round] { round->begin(); });
    });
}

/** Tries the display that the windows would come up on. Qt ends the process where there is none. */
int openDisplay(const std::filesystem::path& folder, Teller& teller) {
    moveInto(Places(folder));
    static int noArguments = 1;
    static char name[] = "brindlewake";
    static char* arguments[] = {name, nullptr};
    const QGuiApplication application(noArguments, arguments);
    teller.begin(QGuiApplication::platformName().toStdString());
    teller.end(Outcome::Ok, QGuiApplication::platformName().toStdString());
    return EXIT_SUCCESS;
}

class SelfTest {
  public:
    explicit SelfTest(const SelfTestOrder& order) : order_(order) {}

    ~SelfTest() = default;
    SelfTest(const SelfTest&) = delete;
    SelfTest& operator=(const SelfTest&) = delete;

    /** Returns the status to end with, unless a signal has come, which then ends the process. */
    int run() {
        const char* step = "make a folder of its own";
        try {
            PrivateFolder folder;
            lines_.tell(Outcome::Ok, step);
            step = "watch the program";
            useProgram(folder.path());
            tryDisplay(folder.path() / "display");
            const std::string left = folder.remove();
            lines_.tell(left.empty() ? Outcome::Ok : Outcome::Failed, "leave nothing behind", left);
        } catch (const std::system_error& error) {
            lines_.tell(Outcome::Failed, step, error.what());
        }
        interruptions_.leave();
        if (interruptions_.signal() != 0) {
            static_cast<void>(std::raise(interruptions_.signal()));
        }
        return lines_.anyFailed() ? EXIT_FAILURE : EXIT_SUCCESS;
    }

  private:
    bool mayGoOn() const { return interruptions_.signal() == 0 && Clock::now() < until_; }

    void useProgram(const std::filesystem::path& folder) {
        for (const Encrypted encrypted : {Encrypted::No, Encrypted::Yes}) {
            if (!mayGoOn()) {
                return;
            }
            const std::filesystem::path own = folder / (encrypted == Encrypted::No ? "clear" : "encrypted");
            lines_.processEnded(
                watchProcess([&](Teller& teller) { return goRound(order_, own, encrypted, teller); },
                             [this](const Note& note) { lines_.take(note); }, interruptions_, until_));
        }
    }

    void tryDisplay(const std::filesystem::path& folder) {
        if (!mayGoOn()) {
            return;
        }
        const std::string step = "open the display";
        if (qgetenv("DISPLAY").isEmpty() && qgetenv("WAYLAND_DISPLAY").isEmpty()) {
            lines_.tell(Outcome::NotHere, step, "neither DISPLAY nor WAYLAND_DISPLAY is set");
            return;
        }
        bool opened = false;
        const std::string fault = watchProcess(
            [&](Teller& teller) { return openDisplay(folder, teller); },
            [&opened](const Note& note) { opened = note.kind == Note::Kind::Ends; }, interruptions_, until_);
        lines_.tell(opened ? Outcome::Ok : Outcome::NotHere, step,
                    opened ? "" : "it cannot be opened: " + fault);
    }

    const SelfTestOrder& order_;
    OutcomeLines lines_;
    Interruptions interruptions_;
    Clock::time_point until_ = Clock::now() + kTimeLimit;
};
} // namespace

} // namespace selftest

extern "C" __attribute__((visibility("default"))) int brindlewakeTestItself(const SelfTestOrder& order) {
    // With nobody to read the lines, the folder is to be removed all the same.
    std::signal(SIGPIPE, SIG_IGN);
    return selftest::SelfTest(order).run();
}
