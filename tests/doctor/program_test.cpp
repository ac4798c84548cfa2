// The built program as an administrator runs it: each row of the troubleshooting table in
// docs/administrator.md.

#include "email/settings_file.h"
#include "tests/support/faulty_tls.h"
#include "tests/support/places.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/smtp_script.h"
#include "tests/support/trusted_root.h"
#include "tests/support/window_test.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace filesystem = std::filesystem;

namespace {
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::SmtpMailbox;
using support::TlsIdentity;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kMessage = "From: ann@example.org\r\nSubject: one\r\nDate: today\r\n\r\nbody\r\n";
constexpr const char* kPassword = "secret-as-can-be";

/** What the program has said and how it has ended. */
struct Ended {
    int status = -1;
    QByteArray output;
    QByteArray errors;

    QJsonObject json() const { return QJsonDocument::fromJson(output).object(); }

    /** The finding with this number, an empty object for none; `words` must be in its text or its box. */
    QJsonObject finding(int number, const char* words = "") const {
        for (const QJsonValue& value : json().value(QStringLiteral("findings")).toArray()) {
            const QJsonObject found = value.toObject();
            const QString all = found.value(QStringLiteral("text")).toString() +
                                found.value(QStringLiteral("box")).toString();
            if (found.value(QStringLiteral("number")).toInt() == number &&
                all.contains(QString::fromUtf8(words))) {
                return found;
            }
        }
        return {};
    }

    QString grade(int number, const char* words = "") const {
        return finding(number, words).value(QStringLiteral("grade")).toString();
    }
};

const QString kStops = QStringLiteral("stops");
const QString kMet = QStringLiteral("met");

class DoctorProgram : public support::WindowTest {
  protected:
    DoctorProgram() {
        filesystem::create_directory(folder.path("work"));
        filesystem::create_directory(folder.path("home"));
        fields = support::schoolSettings(popServer.address());
        fields.SMTPServer = smtpServer.address();
        fields.SaveDirectory = QStringLiteral("C:\\");
        fields.PlayWav = QStringLiteral("no");
        environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment.insert(QStringLiteral("HOME"), folder.qtPath("home"));
        environment.insert(QStringLiteral("XDG_STATE_HOME"), folder.qtPath("home/state"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder.qtPath("home"));
        filesystem::permissions(folder.path("home"), filesystem::perms::owner_all);
    }

    void writeWork(const email::SettingsFields& settings) {
        folder.write("work/tolk.ini", email::settingsFileText(settings, email::Settings()));
    }

    std::unique_ptr<QProcess> start(const QStringList& arguments, const QByteArray& input = {}) {
        auto process = std::make_unique<QProcess>();
        process->setWorkingDirectory(folder.qtPath("work"));
        process->setProcessEnvironment(environment);
        process->start(program, arguments);
        EXPECT_TRUE(process->waitForStarted());
        process->write(input);
        process->closeWriteChannel();
        return process;
    }

    Ended run(const QStringList& arguments, const QByteArray& input = {}) {
        const auto process = start(arguments, input);
        EXPECT_TRUE(process->waitForFinished(60'000));
        EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
        return {process->exitCode(), process->readAllStandardOutput(), process->readAllStandardError()};
    }

    /** Runs the doctor with the settings of the test, with a log-on. */
    Ended examine() {
        writeWork(fields);
        return run({QStringLiteral("--doctor"), QStringLiteral("--json"), QStringLiteral("--user=ann"),
                    QStringLiteral("--password-stdin")},
                   QByteArray(kPassword) + "\n");
    }

    /** Runs the doctor in the folder as it is, without a log-on. */
    Ended examineAsIs() { return run({QStringLiteral("--doctor"), QStringLiteral("--json")}); }

    /** All paths below the folder, with their sizes and times. */
    std::set<std::string> everything() const {
        std::set<std::string> all;
        for (const auto& entry : filesystem::recursive_directory_iterator(folder.path())) {
            const auto time =
                entry.is_regular_file() ? entry.last_write_time().time_since_epoch().count() : 0;
            all.insert(entry.path().string() + ' ' + std::to_string(time));
        }
        return all;
    }

    QString program = QString::fromStdString(support::buildFolder() + "/bin/brindlewake");
    QProcessEnvironment environment;
    Pop3Mailbox popMailbox{{kMessage}};
    SmtpMailbox smtpMailbox;
    ScriptedServer popServer{popMailbox};
    ScriptedServer smtpServer{smtpMailbox};
    email::SettingsFields fields;
};

TEST_F(DoctorProgram, NeedsNoDisplayAndFindsNothingThatStopsMembers) {
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0) << ended.output.toStdString();
    EXPECT_EQ(ended.json().value(QStringLiteral("status")).toInt(-1), 0);
    EXPECT_EQ(ended.json().value(QStringLiteral("settings")).toArray().size(), 16);
    EXPECT_EQ(ended.json().value(QStringLiteral("servers")).toArray().size(), 2);
    EXPECT_TRUE(ended.errors.isEmpty()) << ended.errors.toStdString();
}

TEST_F(DoctorProgram, TellsAPersonInText) {
    writeWork(fields);
    const Ended ended = run({QStringLiteral("--doctor")});
    EXPECT_EQ(ended.status, 0);
    EXPECT_TRUE(ended.output.contains("Settings\n")) << ended.output.toStdString();
    EXPECT_TRUE(ended.output.contains("POPServer"));
    EXPECT_TRUE(ended.output.contains("Nothing that was examined stops members."));
}

TEST_F(DoctorProgram, WritesNoFileAndShowsNoPassword) {
    writeWork(fields);
    const auto before = everything();
    const Ended ended = examine();
    // The settings were written anew by the test itself.
    EXPECT_EQ(everything().size(), before.size());
    for (const QByteArray& said : {ended.output, ended.errors}) {
        EXPECT_FALSE(said.contains(kPassword));
        EXPECT_FALSE(said.contains(QByteArray(kPassword).toBase64()));
    }
    EXPECT_THAT(popServer.commands(), Contains(std::string("PASS ") + kPassword));
    EXPECT_THAT(popServer.keywords(), Not(Contains("RETR")));
    EXPECT_THAT(popServer.keywords(), Not(Contains("DELE")));
    EXPECT_THAT(smtpServer.keywords(), Not(Contains("MAIL")));
}

TEST_F(DoctorProgram, ChangesIntoTheFolderOfTheSettingsFirst) {
    writeWork(fields);
    const QString work = folder.qtPath("work");
    filesystem::create_directory(folder.path("work/elsewhere"));
    const auto process = std::make_unique<QProcess>();
    process->setWorkingDirectory(folder.qtPath("work/elsewhere"));
    process->setProcessEnvironment(environment);
    process->start(program, {QStringLiteral("--settings-folder=") + work, QStringLiteral("--doctor"),
                             QStringLiteral("--json")});
    ASSERT_TRUE(process->waitForFinished(60'000));
    EXPECT_EQ(process->exitCode(), 0);
    const Ended missing = run({QStringLiteral("--settings-folder=none"), QStringLiteral("--doctor")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.output.isEmpty());
    EXPECT_TRUE(missing.errors.contains("none"));
}

TEST_F(DoctorProgram, WrongUseIsStatus2WithTheUsageAndNoWindow) {
    for (const QStringList& wrong : {QStringList{QStringLiteral("--unknown")},
                                     {QStringLiteral("word")},
                                     {QStringLiteral("--mail=mime")},
                                     {QStringLiteral("--doctor"), QStringLiteral("--user=ann")},
                                     {QStringLiteral("--doctor"), QStringLiteral("--password-stdin")}}) {
        const Ended ended = run(wrong);
        EXPECT_EQ(ended.status, 2) << wrong.join(u' ').toStdString();
        EXPECT_TRUE(ended.output.isEmpty());
        EXPECT_TRUE(ended.errors.contains("Usage: brindlewake"));
    }
    const Ended noPassword =
        run({QStringLiteral("--doctor"), QStringLiteral("--user=ann"), QStringLiteral("--password-stdin")});
    EXPECT_EQ(noPassword.status, 2);
}

TEST_F(DoctorProgram, TellsItsVersionAndThoseOfItsLibraries) {
    const Ended version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(version.output.startsWith("Brindlewake "));
    EXPECT_TRUE(version.output.contains(QByteArray("\nQt ") + qVersion() + "\n"));
    EXPECT_TRUE(version.output.contains("OpenSSL"));
    const Ended help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.startsWith("Usage: brindlewake"));
}

// From here on the rows of the table, in its order.

TEST_F(DoctorProgram, WithoutSettings) {
    const Ended ended = examineAsIs();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(53, "You must configure Brindlewake!"), kStops);
}

TEST_F(DoctorProgram, WithFewerLines) {
    folder.write("work/tolk.ini", "ShowSetup=yes\r\n[MailServer Info]\r\n");
    EXPECT_EQ(examineAsIs().grade(62, "Problem starting Brindlewake. Error# 62"), kStops);
}

TEST_F(DoctorProgram, WithAnInsertedLine) {
    const std::string text = email::settingsFileText(fields, email::Settings());
    folder.write("work/tolk.ini", "inserted\r\n" + text);
    EXPECT_EQ(examineAsIs().grade(13, "Problem starting Brindlewake. Error# 13"), kStops);
}

TEST_F(DoctorProgram, WithSettingsThatEverybodyMayWriteOrALinkThatLeadsNowhere) {
    writeWork(fields);
    filesystem::permissions(folder.path("work/tolk.ini"), filesystem::perms::others_write,
                            filesystem::perm_options::add);
    EXPECT_EQ(examineAsIs().grade(75, "Problem starting Brindlewake. Error# 75"), kStops);
    filesystem::remove(folder.path("work/tolk.ini"));
    filesystem::create_symlink("nowhere", folder.path("work/tolk.ini"));
    EXPECT_EQ(examineAsIs().grade(75, "nowhere"), kStops);
}

TEST_F(DoctorProgram, WithASwitchThatIsYesInCapitals) {
    fields.AllowPrinting = QStringLiteral("Yes");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.grade(0, "AllowPrinting is \"Yes\""), kMet);
}

TEST_F(DoctorProgram, WhileTheProgramRunsInTheFolder) {
    writeWork(fields);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    const auto running = start({});
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const auto files = everything();
            return std::any_of(files.begin(), files.end(),
                               [](const auto& path) { return path.find(".socket ") != std::string::npos; });
        },
        20'000));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    const Ended ended = examineAsIs();
    EXPECT_EQ(ended.grade(0, "Brindlewake is already running in this folder"), kMet);
    EXPECT_EQ(running->state(), QProcess::Running);
    running->kill();
    EXPECT_TRUE(running->waitForFinished());
}

TEST_F(DoctorProgram, WhereLettersCannotBeKept) {
    folder.write("home/state", "a file");
    EXPECT_EQ(examine().grade(75, "This letter is not kept. Error# 75"), kMet);
}

TEST_F(DoctorProgram, WithoutLogoAndSound) {
    fields.PlayWav = QStringLiteral("yes");
    const Ended ended = examine();
    EXPECT_FALSE(ended.finding(0, "No tolk.jpg").isEmpty());
    EXPECT_EQ(ended.grade(0, "No Gotmail.wav"), kMet);
}

TEST_F(DoctorProgram, WithAServerThatDoesNotKnowThePassword) {
    popMailbox.allowOnly("ann", "stored otherwise");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(20172, "Password Or User Name Wrong, Please Try Again 20172"), kStops);
}

TEST_F(DoctorProgram, WithAServerThatTakesNoPasswordInClear) {
    popMailbox.offers({.passwordInClear = false});
    fields.POPServer = QStringLiteral("plain://") + popServer.address();
    EXPECT_EQ(examine().grade(20321, "Error 20321 Please start program again"), kStops);
}

TEST_F(DoctorProgram, WithACertificateThatIsNotGoodOrTlsWhereThereIsNone) {
    const support::TrustedRoot root;
    environment.insert(QStringLiteral("SSL_CERT_FILE"), qEnvironmentVariable("SSL_CERT_FILE"));
    const auto ends = [&](const mailserver::Certificate& certificate) {
        popMailbox.tlsFromTheStart(TlsIdentity(certificate));
        fields.POPServer = QStringLiteral("tls://") + popServer.address();
        return examine();
    };
    for (const auto& [name, certificate, error] : support::faultyCertificates()) {
        const std::string box = "Error " + std::to_string(error);
        EXPECT_EQ(ends(certificate).grade(error, box.c_str()), kStops) << name;
    }
    fields.POPServer = QStringLiteral("tls://") + smtpServer.address();
    EXPECT_EQ(examine().grade(20325, "Error 20325"), kStops);
}

TEST_F(DoctorProgram, WithAMailboxThatIsOpenElsewhereOrADelay) {
    popMailbox.answer("PASS", "-ERR [IN-USE] locked\r\n");
    const Ended locked = examine();
    EXPECT_EQ(locked.status, 0);
    EXPECT_EQ(locked.grade(20102, "Cannot Re-Enter Mail Server, Please Try Again 20102"), kMet);
    popMailbox.answer("PASS", "-ERR [LOGIN-DELAY] wait\r\n");
    EXPECT_EQ(examine().grade(20102, "too soon"), kMet);
}

TEST_F(DoctorProgram, WithAServerThatIsNoPop3Server) {
    popMailbox.answer("GREETING", "220 mail.example.org ESMTP\r\n");
    EXPECT_EQ(examine().grade(20302, "There was trouble connecting with the Mail Server."), kStops);
}

TEST_F(DoctorProgram, WithAMisspeltName) {
    fields.POPServer = QStringLiteral("no..name");
    EXPECT_EQ(examine().grade(26002, "Mail Server not found."), kStops);
}

TEST_F(DoctorProgram, WhereNothingListens) {
    const support::RefusingPort refusing;
    fields.POPServer = refusing.address();
    EXPECT_EQ(examine().grade(25062, "Connection refused by host."), kStops);
}

TEST_F(DoctorProgram, WithADirectoryThatIsNotThereWhereMembersCanSearchIt) {
    const support::RefusingPort refusing;
    fields.LDAPServer = refusing.address();
    fields.AddressLookup = QStringLiteral("Directory Server");
    fields.ShowDatabase = QStringLiteral("no");
    EXPECT_EQ(examine().json().value(QStringLiteral("servers")).toArray().size(), 2);
    fields.ShowDatabase = QStringLiteral("yes");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.json().value(QStringLiteral("servers")).toArray().size(), 3);
    EXPECT_EQ(ended.grade(25062, "The directory server refused the connection."), kMet);
    fields.AddressLookup = QStringLiteral("directory server");
    EXPECT_EQ(examine().json().value(QStringLiteral("servers")).toArray().size(), 2);
}

TEST_F(DoctorProgram, WithoutItsLibraries) {
    // A second name in another folder: the libraries are looked for beside it.
    filesystem::create_directories(folder.path("other/bin"));
    filesystem::create_hard_link(support::buildFolder() + "/bin/brindlewake",
                                 folder.path("other/bin/brindlewake"));
    program = folder.qtPath("other/bin/brindlewake");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(25052, "Network is unreachable."), kStops);
    EXPECT_EQ(ended.grade(20325, "libbrindlewake_tls.so"), kStops);
    EXPECT_EQ(ended.grade(482, "libbrindlewake_printing.so"), kMet);
    EXPECT_EQ(ended.grade(53, "libbrindlewake_directory.so"), kMet);
    EXPECT_EQ(run({QStringLiteral("--version")}).status, 0);
}

TEST_F(DoctorProgram, WithASendingServerWithoutAWayThatMayBeUsed) {
    smtpMailbox.offers({.mechanisms = {"GSSAPI"}, .demandsLogOn = true});
    EXPECT_EQ(examine().grade(20418, "Unable to send message. Error# 20418"), kStops);
}

TEST_F(DoctorProgram, WithASendingServerThatDoesNotKnowThePassword) {
    smtpMailbox.offers({.mechanisms = {"PLAIN"}}).allowOnly("ann", "another one");
    EXPECT_EQ(examine().grade(20417, "Unable to send message. Error# 20417"), kStops);
}

TEST_F(DoctorProgram, WithASendingServerThatIsSpelledForAnotherPort) {
    fields.SMTPServer = QStringLiteral("plain://127.0.0.1:465");
    EXPECT_EQ(examine().grade(20433, "Unable to send message. Error# 20433"), kMet);
}

TEST_F(DoctorProgram, WhereTheAttachmentsFileCannotBeWritten) {
    filesystem::create_symlink("/elsewhere", folder.path("work/_tolk.tmp"));
    EXPECT_EQ(examine().grade(75, "There is an error in the message header. Error# 75"), kMet);
}

TEST_F(DoctorProgram, WithADriveThatIsNotReady) {
    fields.SaveDirectory = QStringLiteral("Q:\\");
    EXPECT_EQ(examine().grade(68, "Please make sure disk is ready. Error#68"), kMet);
}

TEST_F(DoctorProgram, WithoutADefaultPrinter) {
    fields.AllowPrinting = QStringLiteral("yes");
    environment.insert(QStringLiteral("CUPS_SERVER"), folder.qtPath("none"));
    EXPECT_EQ(examine().grade(482, "Run-time error 482"), kMet);
}

TEST_F(DoctorProgram, WithAMessageThatEndsTheLogIn) {
    popMailbox.deliver(
        "From: eve@example.org\r\nSubject: bad\r\nContent-Type: multipart/mixed; boundary=x\r\n\r\n\r\n");
    const Ended ended = examine();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.grade(5, "Error 5 Please start program again"), kStops);
    EXPECT_EQ(ended.finding(5).value(QStringLiteral("message")).toInt(), 2);
}
} // namespace
