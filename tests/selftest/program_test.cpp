// The built program as a support desk runs it: brindlewake --self-test.

#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace filesystem = std::filesystem;

namespace {
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/** What the steps find on this computer, or do not. */
constexpr std::array<const char*, 3> kMayBeMissing = {"play the sound", "find a printer", "open the display"};

class SelfTestProgram : public testing::Test {
  protected:
    SelfTestProgram() {
        for (const char* const name : {"home", "temporary", "current"}) {
            filesystem::create_directory(folder.path(name));
            filesystem::permissions(folder.path(name), filesystem::perms::owner_all);
        }
        environment = QProcessEnvironment::systemEnvironment();
        for (const char* const name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
            environment.remove(QLatin1String(name));
        }
        set("HOME", "home");
        set("XDG_STATE_HOME", "home/state");
        set("XDG_RUNTIME_DIR", "home");
        set("TMPDIR", "temporary");
    }

    void set(const char* variable, const char* name) {
        environment.insert(QLatin1String(variable), folder.qtPath(name));
    }

    void start(const QStringList& arguments = {}) {
        process.setWorkingDirectory(folder.qtPath("current"));
        process.setProcessEnvironment(environment);
        process.start(program, QStringList{QStringLiteral("--self-test")} + arguments);
        ASSERT_TRUE(process.waitForStarted());
    }

    /** Runs it to its end; returns its lines. */
    std::vector<std::string> run(const QStringList& arguments = {}) {
        start(arguments);
        EXPECT_TRUE(process.waitForFinished(100'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return takeLines();
    }

    std::vector<std::string> takeLines() {
        std::vector<std::string> lines;
        for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
            if (!line.isEmpty()) {
                lines.push_back(line.toStdString());
            }
        }
        return lines;
    }

    /** All paths below the folder of the test. */
    std::set<filesystem::path> everything() const {
        const filesystem::recursive_directory_iterator all(folder.path());
        return {begin(all), end(all)};
    }

    /** An installation of the program without one of its libraries. */
    void installWithout(const char* missing) {
        const filesystem::path installed = folder.path("installed");
        filesystem::create_directories(installed / "bin");
        filesystem::create_directories(installed / "lib/brindlewake");
        const filesystem::path built = support::buildFolder();
        filesystem::create_hard_link(built / "bin/brindlewake", installed / "bin/brindlewake");
        for (const auto& library : filesystem::directory_iterator(built / "lib/brindlewake")) {
            const filesystem::path name = library.path().filename();
            if (name != missing) {
                filesystem::create_symlink(library.path(), installed / "lib/brindlewake" / name);
            }
        }
        program = QString::fromStdString(installed / "bin/brindlewake");
    }

    support::TemporaryFolder folder;
    QProcessEnvironment environment;
    QString program = QString::fromStdString(support::buildFolder() + "/bin/brindlewake");
    QProcess process;
};

/** The lines of a computer that has everything; "not here" of what may be missing counts as well. */
std::vector<std::string> withoutReasons(std::vector<std::string> lines) {
    for (std::string& line : lines) {
        for (const char* const step : kMayBeMissing) {
            if (line.starts_with(std::string("not here ") + step + ": ")) {
                line = std::string("ok       ") + step;
            }
        }
    }
    return lines;
}

const std::vector<std::string> kAllWell = {
    "ok       make a folder of its own",
    "ok       start the program",
    "ok       start servers on this computer",
    "ok       show the login window",
    "ok       play the sound",
    "ok       refuse a wrong password",
    "ok       log in",
    "ok       list the messages",
    "ok       open a message",
    "ok       save an attachment",
    "ok       print into a file",
    "ok       find a printer",
    "ok       close the message",
    "ok       send a message with an attachment",
    "ok       get new mail",
    "ok       read the new message",
    "ok       delete a message",
    "ok       end the program",
    "ok       start the program again",
    "ok       start servers that encrypt",
    "ok       log in, encrypted",
    "ok       list the messages, encrypted",
    "ok       send a message, encrypted",
    "ok       tell of the encryption",
    "ok       end the program again",
    "ok       open the display",
    "ok       leave nothing behind",
};
} // namespace

TEST_F(SelfTestProgram, TellsEachStepInBothWaysOfReadingMail) {
    for (const char* const mail : {"--mail=house", "--mail=standard"}) {
        EXPECT_THAT(withoutReasons(run({QLatin1String(mail)})), ElementsAreArray(kAllWell)) << mail;
        EXPECT_EQ(process.exitCode(), EXIT_SUCCESS) << mail;
        EXPECT_THAT(process.readAllStandardError().toStdString(), Not(HasSubstr("plugin does not support")));
    }
}

TEST_F(SelfTestProgram, TouchesNothingOfTheMembers) {
    folder.write("current/tolk.ini", "no settings\r\n");
    filesystem::create_directories(folder.path("home/state/brindlewake"));
    folder.write("home/state/brindlewake/letter", "a letter\r\n");
    set("BRINDLEWAKE_DRIVE_C", "home");
    set("BRINDLEWAKE_DRIVE_Q", "home");
    const auto before = everything();
    EXPECT_THAT(run(), Contains("ok       leave nothing behind"));
    EXPECT_EQ(process.exitCode(), EXIT_SUCCESS);
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(folder.read("current/tolk.ini"), "no settings\r\n");
    EXPECT_EQ(folder.read("home/state/brindlewake/letter"), "a letter\r\n");
}

TEST_F(SelfTestProgram, FailsWhereNoFolderCanBeMade) {
    set("TMPDIR", "missing");
    EXPECT_THAT(run(), ElementsAre(StartsWith("FAILED   make a folder of its own: ")));
    EXPECT_EQ(process.exitCode(), EXIT_FAILURE);
}

TEST_F(SelfTestProgram, FailsWithTheBoxThatMembersWouldSee) {
    installWithout("libbrindlewake_network.so");
    const auto lines = run();
    EXPECT_THAT(lines, Contains("FAILED   refuse a wrong password: a box says \"Network is unreachable.\""));
    // What needs no connection in clear has been tried all the same.
    EXPECT_THAT(lines, Contains("ok       log in, encrypted"));
    EXPECT_THAT(lines, Not(Contains("ok       log in")));
    EXPECT_EQ(process.exitCode(), EXIT_FAILURE);
    EXPECT_TRUE(filesystem::is_empty(folder.path("temporary")));
}

TEST_F(SelfTestProgram, GoesOnBehindAStepOfWhichNothingElseDepends) {
    installWithout("libbrindlewake_printing.so");
    const auto lines = run();
    EXPECT_THAT(lines, Contains(StartsWith("FAILED   print into a file: a box says \"Run-time error 482")));
    EXPECT_THAT(lines, Contains("ok       delete a message"));
    EXPECT_EQ(process.exitCode(), EXIT_FAILURE);
}

TEST_F(SelfTestProgram, FailsWithoutTheLibraryOfTheTest) {
    installWithout("libbrindlewake_selftest.so");
    EXPECT_THAT(run(), ElementsAre("FAILED   load the test: libbrindlewake_selftest.so cannot be loaded"));
    EXPECT_EQ(process.exitCode(), EXIT_FAILURE);
}

TEST_F(SelfTestProgram, RemovesItsFolderWhenItIsInterrupted) {
    start();
    ASSERT_TRUE(process.waitForReadyRead());
    ASSERT_FALSE(filesystem::is_empty(folder.path("temporary")));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(process.exitCode(), SIGTERM);
    EXPECT_TRUE(filesystem::is_empty(folder.path("temporary")));
}

TEST_F(SelfTestProgram, RemovesItsFolderWhenNobodyReadsItsLines) {
    start();
    process.closeReadChannel(QProcess::StandardOutput);
    ASSERT_TRUE(process.waitForFinished(100'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_TRUE(filesystem::is_empty(folder.path("temporary")));
}
