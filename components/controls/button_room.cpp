#include "components/controls/button_room.h"

#include <QPushButton>

namespace controls {

void giveCaptionRoom(QPushButton& button) {
    // The style's own margin is a few units, which looks like none beside large letters.
    button.setMinimumWidth(button.sizeHint().width() + 2 * button.fontMetrics().averageCharWidth());
}

} // namespace controls
