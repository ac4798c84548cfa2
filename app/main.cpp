#include "app/second_start.h"
#include "platform/program.h"
#include "windows/application.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QLoggingCategory>

#include <csignal>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
    // A write beyond the limit on file sizes must fail with an error, as on a full disk, instead of ending
    // the program.
    std::signal(SIGXFSZ, SIG_IGN);
    platform::refuseCoreDumps();
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
    const LoadedWindows windows;
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
    return Application::exec();
}
