#pragma once

class QPushButton;

namespace controls {

/** Widens the button's minimum so that its caption keeps away from the edges, with letters of any size. */
void giveCaptionRoom(QPushButton& button);

} // namespace controls
