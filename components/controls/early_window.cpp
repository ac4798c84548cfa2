#include "components/controls/early_window.h"

#include <QBackingStore>
#include <QGuiApplication>
#include <QPainter>
#include <QWidget>
#include <QWindow>

namespace controls {

void makeSystemWindow(QWidget& widget) {
    widget.winId();
    // Qt has a negative base size for a window that it has not shown. On a screen of scale 2 Qt tells it to
    // the window manager, and one made a window of 65534 units from it.
    widget.windowHandle()->setBaseSize(QSize(0, 0));
}

void makeRoomForPicture(QWidget& widget) {
    QBackingStore* const store = widget.backingStore();
    // Elsewhere a picture may belong to a surface, as under Wayland, where a hidden window has none.
    if (store == nullptr || QGuiApplication::platformName() != QStringLiteral("xcb")) {
        return;
    }
    // One column more than the window has: Qt paints the whole window when it is shown and the sizes differ.
    const QRect all(QPoint(0, 0), widget.size() + QSize(1, 0));
    store->resize(all.size());
    store->beginPaint(all);
    QPainter(store->paintDevice()).fillRect(all, widget.palette().window());
    store->endPaint();
}

} // namespace controls
