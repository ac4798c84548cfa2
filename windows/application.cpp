#include "windows/application.h"

#include "components/controls/message_box.h"
#include "platform/runtime_error.h"

#include <QIcon>
#include <QTimer>

#include <utility>

Application::Application(int& argumentCount, char** arguments) : QApplication(argumentCount, arguments) {
    // On every window; a picture of the program's own, since it may run without being installed.
    setWindowIcon(QIcon(QStringLiteral(":/brindlewake/brindlewake.png")));
    // Where a desktop takes the icon from the menu entry instead.
    setDesktopFileName(QStringLiteral("brindlewake"));
}

bool Application::notify(QObject* receiver, QEvent* event) {
    bool answer = false;
    const int error = platform::errorNumberOf([&] { answer = QApplication::notify(receiver, event); });
    // One box is enough, and it comes later: the event may have been a request to paint.
    if (error != 0 && !std::exchange(reporting_, true)) {
        QTimer::singleShot(0, this, [this, error] {
            controls::reportError(error);
            reporting_ = false;
        });
    }
    return answer;
}
