#include "platform/window_turns.h"

#include <QEventLoop>
#include <QTimer>

namespace platform {

void WindowTurns::giveWhenDue() {
    if (!sinceTurn_.hasExpired(kWorkTime.count())) {
        return;
    }
    QEventLoop loop;
    // A timer without delay fires when no other event is left, so the turn ends then.
    QTimer end;
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(0);
    loop.exec();
    sinceTurn_.start();
}

} // namespace platform
