#pragma once

class QWidget;

namespace controls {

/** Makes the system's own window before the widget is shown, so that it can be told of others or filled. */
void makeSystemWindow(QWidget& widget);

} // namespace controls
