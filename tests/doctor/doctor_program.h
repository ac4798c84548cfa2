#pragma once

#include "email/settings_file.h"
#include "tests/support/places.h"
#include "tests/support/pop3_script.h"
#include "tests/support/scripted_server.h"
#include "tests/support/smtp_script.h"
#include "tests/support/window_test.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace filesystem = std::filesystem;

namespace support {
inline constexpr const char* kMessage =
    "From: ann@example.org\r\nSubject: one\r\nDate: today\r\n\r\nbody\r\n";
inline constexpr const char* kPassword = "secret-as-can-be";

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

inline const QString kStops = QStringLiteral("stops");
inline const QString kMet = QStringLiteral("met");

/** The built program as an administrator runs it. */
class DoctorProgram : public WindowTest {
  protected:
    DoctorProgram() {
        filesystem::create_directory(folder.path("work"));
        filesystem::create_directory(folder.path("home"));
        fields = schoolSettings(popServer.address());
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

    QString program = QString::fromStdString(buildFolder() + "/bin/brindlewake");
    QProcessEnvironment environment;
    Pop3Mailbox popMailbox{{kMessage}};
    SmtpMailbox smtpMailbox;
    ScriptedServer popServer{popMailbox};
    ScriptedServer smtpServer{smtpMailbox};
    email::SettingsFields fields;
};

} // namespace support
