#pragma once

class QWidget;

namespace controls {

/** Makes the widget's system window before it is shown, so that it can get a transient parent or a picture.
 */
void makeSystemWindow(QWidget& widget);

/**
 * Under X11, gets the memory that the window's picture on the screen will need. It has a system window
 * already.
 */
void makeRoomForPicture(QWidget& widget);

} // namespace controls
