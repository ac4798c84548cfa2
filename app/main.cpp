#include <QApplication>

#include "windows/windows.h"
#include "windows/wiring.h"

int main(int argumentCount, char** arguments) {
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
