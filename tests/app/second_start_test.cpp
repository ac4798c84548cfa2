// A second start by the same user. The tests start the built program as separate processes.

#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QCoreApplication>
#include <QProcess>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

namespace filesystem = std::filesystem;

namespace {
class SecondStart : public support::WindowTest {
  protected:
    SecondStart() {
        filesystem::create_directory(folder.path("one"));
        filesystem::create_directory(folder.path("two"));
        filesystem::create_directory(folder.path("runtime"));
        filesystem::permissions(folder.path("runtime"), filesystem::perms::owner_all);
    }

    /** Starts the program in the folder and waits until the process runs. */
    std::unique_ptr<QProcess> start(const char* where, const char* platform = "offscreen") {
        auto process = std::make_unique<QProcess>();
        process->setWorkingDirectory(folder.qtPath(where));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QLatin1String(platform));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder.qtPath("runtime"));
        environment.insert(QStringLiteral("HOME"), folder.qtPath("."));
        process->setProcessEnvironment(environment);
        process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process->start(QString::fromStdString(support::buildFolder() + "/brindlewake"), {});
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }

    /** Starts the program and waits until it listens for later starts. */
    std::unique_ptr<QProcess> startFirst(const char* where) {
        const auto before = sockets();
        auto process = start(where);
        EXPECT_TRUE(QTest::qWaitFor([&] { return sockets() != before; }, 20'000));
        return process;
    }

    /** The sockets at which programs listen, each with the time of its last change. */
    std::map<filesystem::path, filesystem::file_time_type> sockets() const {
        const filesystem::path place = folder.path("runtime/brindlewake");
        std::map<filesystem::path, filesystem::file_time_type> found;
        if (filesystem::exists(place)) {
            for (const auto& entry : filesystem::directory_iterator(place)) {
                std::error_code goneMeanwhile;
                if (entry.is_socket(goneMeanwhile)) {
                    found[entry.path()] = entry.last_write_time(goneMeanwhile);
                }
            }
        }
        return found;
    }

    static bool runs(const QProcess& process) { return process.state() == QProcess::Running; }

    static void end(QProcess& process) {
        process.kill();
        process.waitForFinished();
    }
};
} // namespace

TEST_F(SecondStart, InOneFolderItEndsWellAndTheFirstGoesOn) {
    const auto first = startFirst("one");
    const auto second = start("one");
    ASSERT_TRUE(second->waitForFinished(20'000));
    EXPECT_EQ(second->exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_TRUE(runs(*first));
    end(*first);
}

TEST_F(SecondStart, InTwoFoldersBothWork) {
    const auto first = startFirst("one");
    const auto second = startFirst("two");
    EXPECT_TRUE(runs(*first));
    EXPECT_TRUE(runs(*second));
    end(*first);
    end(*second);
}

TEST_F(SecondStart, AfterTheFirstWasKilledTheNextOneWorks) {
    end(*startFirst("one"));
    const auto next = startFirst("one");
    const auto second = start("one");
    ASSERT_TRUE(second->waitForFinished(20'000));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_TRUE(runs(*next));
    end(*next);
}

TEST_F(SecondStart, OnAnotherScreenItTellsInABoxAndTouchesNothing) {
    const auto first = startFirst("one");
    const auto second = start("one", "minimal");
    EXPECT_FALSE(second->waitForFinished(500)) << "the box waits for an answer";
    EXPECT_TRUE(filesystem::is_empty(folder.path("one")));
    end(*second);
    EXPECT_TRUE(runs(*first));
    end(*first);
}

namespace {
class WindowInUse : public support::WindowTest {
  protected:
    WindowInUse() {
        writeSettings(support::schoolSettings(QStringLiteral("mail.example.org")));
        startUp();
    }

    /** Returns the window that bringUpWindowInUse() brings to the front when none of the program's is active.
     */
    static QWidget* broughtUp() {
        QWidget other;
        other.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
        other.hide();
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() == nullptr; }));
        bringUpWindowInUse();
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() != nullptr; }));
        return QApplication::activeWindow();
    }
};
} // namespace

TEST_F(WindowInUse, IsTheLoginWindowAtFirst) {
    EXPECT_EQ(broughtUp(), &loginWindow());
}

TEST_F(WindowInUse, IsTheOneThatLiesOverTheOthers) {
    mainWindow().bringUp();
    mainWindow().cmdCmpose->click();
    EXPECT_EQ(broughtUp(), &composeWindow());
}

TEST_F(WindowInUse, IsNotOneThatRests) {
    mainWindow().bringUp();
    composeWindow().bringUp();
    composeWindow().setEnabled(false);
    EXPECT_EQ(broughtUp(), &mainWindow());
}

TEST_F(WindowInUse, ComesBackWhenItWasMinimised) {
    mainWindow().cmdCmpose->click();
    composeWindow().showMinimized();
    EXPECT_EQ(broughtUp(), &composeWindow());
    EXPECT_FALSE(composeWindow().isMinimized());
}

TEST_F(WindowInUse, ComesBackWhenItWasMinimisedAndStillCountsAsActive) {
    mainWindow().bringUp();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    mainWindow().showMinimized();
    ASSERT_EQ(QApplication::activeWindow(), &mainWindow());
    bringUpWindowInUse();
    EXPECT_TRUE(QTest::qWaitFor([] { return !mainWindow().isMinimized(); }));
}
