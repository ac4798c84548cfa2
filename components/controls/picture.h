#pragma once

#include <QPixmap>
#include <QString>

namespace controls {

/**
 * Loads a picture file; without a name, the empty picture.
 * \throws RuntimeError 53 when the file is missing, 481 when it is no picture.
 */
QPixmap LoadPicture(const QString& fileName = QString());

inline constexpr int kInvalidPicture = 481;

} // namespace controls
