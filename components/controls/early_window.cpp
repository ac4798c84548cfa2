#include "components/controls/early_window.h"

#include <QWidget>
#include <QWindow>

namespace controls {

void makeSystemWindow(QWidget& widget) {
    widget.winId();
    // Qt has a negative base size for a window that it has not shown. On a screen of scale 2 Qt tells it to
    // the window manager, and one made a window of 65534 units from it.
    widget.windowHandle()->setBaseSize(QSize(0, 0));
}

} // namespace controls
