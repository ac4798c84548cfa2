#include "app/second_start.h"
#include "platform/program.h"
#include "windows/application.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QLoggingCategory>

#include <csignal>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
    // A limit on the size of files is to be an error like a full disk, not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);
    platform::refuseCoreDumps();
    // Or each letter of the password makes a line in the log: that its field has no text to be read.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.accessibility.atspi.warning=false"));
    SecondStart start;
    const Application application(argumentCount, arguments);
    Application::setApplicationName(QStringLiteral("Brindlewake"));
    // Windows are hidden and shown in turn; only the main window and Update end the program.
    Application::setQuitOnLastWindowClosed(false);
    if (const auto status = start.statusToEndWith()) {
        // As the program always ends: at once.
        std::_Exit(*status);
    }
    const LoadedWindows windows;
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
    return Application::exec();
}
