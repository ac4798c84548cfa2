#include "components/controls/early_window.h"

#include <QWidget>
#include <QWindow>

namespace controls {

void makeSystemWindow(QWidget& widget) {
    widget.winId();
    // Qt names a base size of less than nothing for a window that it has not shown. On a screen of scale 2
    // window managers get to know it, and one has made a window of 65534 units of it.
    widget.windowHandle()->setBaseSize(QSize(0, 0));
}

} // namespace controls
