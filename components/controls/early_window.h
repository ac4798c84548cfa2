#pragma once

class QWidget;

namespace controls {

/** Makes the widget's system window before it is shown, so that it can get a transient parent or a picture.
 */
void makeSystemWindow(QWidget& widget);

} // namespace controls
