#include "app/command_line.h"
#include "app/examination.h"
#include "app/second_start.h"
#include "app/self_test.h"
#include "app/version.h"
#include "message/mail_mode.h"
#include "platform/program.h"
#include "windows/application.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <unistd.h>

namespace {
constexpr int kWrongUse = 2;

void write(std::FILE* to, const QString& text) {
    static_cast<void>(std::fputs(text.toUtf8().constData(), to));
}

QStringList textsOf(int argumentCount, char** arguments) {
    QStringList texts;
    for (int i = 0; i < argumentCount; ++i) {
        texts.append(QFile::decodeName(arguments[i]));
    }
    return texts;
}

bool enter(const QString& folder) {
    if (folder.isEmpty() || ::chdir(QFile::encodeName(folder).constData()) == 0) {
        return true;
    }
    write(stderr,
          QStringLiteral("brindlewake: %1: %2\n").arg(folder, QString::fromLocal8Bit(std::strerror(errno))));
    return false;
}

/** Runs the program until it ends. What comes before the windows finds an application object already. */
int showWindows(int argumentCount, char** arguments, const std::function<void()>& beforeWindows = {}) {
    // Otherwise Qt logs a warning for each letter of the password, since its field gives screen readers no
    // text.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.accessibility.atspi.warning=false"));
    SecondStart start;
    const Application application(argumentCount, arguments);
    Application::setApplicationName(QStringLiteral("Brindlewake"));
    // At times no window is visible. Only the main window and Update end the program.
    Application::setQuitOnLastWindowClosed(false);
    if (const auto status = start.statusToEndWith()) {
        // Without destructors, as platform::endProgram() does.
        std::_Exit(*status);
    }
    if (beforeWindows) {
        beforeWindows();
    }
    const LoadedWindows windows;
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
    return Application::exec();
}

int perform(const CommandLine& line, int argumentCount, char** arguments) {
    switch (line.task) {
    case Task::TellUsage:
        write(stdout, usageText());
        return EXIT_SUCCESS;
    case Task::TellVersion: {
        // The library of TLS wants one.
        const QCoreApplication application(argumentCount, arguments);
        write(stdout, versionText());
        return EXIT_SUCCESS;
    }
    case Task::Examine:
        return examine(line, arguments);
    case Task::TestItself:
        return testItself([argumentCount, arguments](const std::function<void()>& beforeWindows) {
            return showWindows(argumentCount, arguments, beforeWindows);
        });
    case Task::ShowWindows:
        break;
    }
    return showWindows(argumentCount, arguments);
}
} // namespace

int main(int argumentCount, char** arguments) {
    // A write beyond the limit on file sizes must fail with an error, as on a full disk, instead of ending
    // the program.
    std::signal(SIGXFSZ, SIG_IGN);
    platform::refuseCoreDumps();
    const auto read = readCommandLine(textsOf(argumentCount, arguments), ::isatty(STDIN_FILENO) == 1);
    if (const auto* const wrong = std::get_if<WrongUse>(&read)) {
        write(stderr, QStringLiteral("brindlewake: %1\n\n%2").arg(wrong->reason, usageText()));
        return kWrongUse;
    }
    const auto& line = std::get<CommandLine>(read);
    if (!enter(line.settingsFolder)) {
        return EXIT_FAILURE;
    }
    useMailMode(line.mail);
    return perform(line, argumentCount, arguments);
}
