#pragma once

#include <QPixmap>
#include <QSize>
#include <QString>

namespace controls {

/**
 * Loads a picture file. Without a name, returns the empty picture. A picture larger than the room, which is
 * in the units that windows are laid out in, is made smaller and keeps its proportions. It then has
 * dotsPerUnit dots to a unit, or as many as the file holds. \throws RuntimeError 53 when the file is missing,
 * 481 when it is not a picture.
 */
QPixmap LoadPicture(const QString& fileName = QString(), QSize room = QSize(), qreal dotsPerUnit = 1);

} // namespace controls
