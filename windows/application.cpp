#include "windows/application.h"

#include "components/controls/message_box.h"
#include "platform/runtime_error.h"

#include <QIcon>
#include <QTimer>

#include <utility>

Application::Application(int& argumentCount, char** arguments) : QApplication(argumentCount, arguments) {
    // The icon comes from the program itself, which may run without being installed.
    setWindowIcon(QIcon(QStringLiteral(":/brindlewake/brindlewake.png")));
    // Some desktops take the icon from the menu entry instead.
    setDesktopFileName(QStringLiteral("brindlewake"));
}

bool Application::notify(QObject* receiver, QEvent* event) {
    bool answer = false;
    const int error = platform::errorNumberOf([&] { answer = QApplication::notify(receiver, event); });
    // The box opens later, since the event may be a paint event, and only once for several errors.
    if (error != 0 && !std::exchange(reporting_, true)) {
        QTimer::singleShot(0, this, [this, error] {
            controls::reportError(error);
            reporting_ = false;
        });
    }
    return answer;
}
