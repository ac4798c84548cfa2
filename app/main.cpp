#include "windows/windows.h"
#include "windows/wiring.h"

#include <QApplication>

#include <csignal>

int main(int argumentCount, char** arguments) {
    // A limit on the size of files is to be an error like a full disk, not the end of the program.
    std::signal(SIGXFSZ, SIG_IGN);
    const QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("Brindlewake"));
    // Windows are hidden and shown in turn; only the main window and Update end the program.
    QApplication::setQuitOnLastWindowClosed(false);
    const LoadedWindows windows;
    runHandler([] {
        mainWindow();
        keepAWindowVisible();
    });
    return QApplication::exec();
}
