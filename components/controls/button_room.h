#pragma once

class QPushButton;

namespace controls {

/** Keeps the caption of a button away from its edges, however large the letters are. */
void giveCaptionRoom(QPushButton& button);

} // namespace controls
