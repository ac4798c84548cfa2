#pragma once

#include <QPixmap>
#include <QSize>
#include <QString>

namespace controls {

/**
 * Loads a picture file; without a name, the empty picture. A picture that is larger than the room, in the
 * units that windows are laid out in, is made smaller and keeps its proportions; it then has that many dots
 * to a unit, or as many as the file holds. \throws RuntimeError 53 when the file is missing, 481 when it is
 * no picture.
 */
QPixmap LoadPicture(const QString& fileName = QString(), QSize room = QSize(), qreal dotsPerUnit = 1);

} // namespace controls
