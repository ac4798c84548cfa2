#include "components/controls/picture.h"

#include "platform/runtime_error.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

namespace controls {

namespace {
/** Returns the size, scaled down to the room if it does not fit, with no side smaller than 1. */
QSize fitted(QSize size, QSize room) {
    const bool fits = size.width() <= room.width() && size.height() <= room.height();
    return fits ? size : size.scaled(room, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}
} // namespace

QPixmap LoadPicture(const QString& fileName, QSize room, qreal dotsPerUnit) {
    if (fileName.isEmpty()) {
        return {};
    }
    if (!QFileInfo(fileName).isFile()) {
        throw platform::RuntimeError(platform::errors::FileNotFound);
    }
    QImageReader reader(fileName);
    const QSize size = reader.size();
    const QSize shown = room.isValid() && size.isValid() ? fitted(size, room) : size;
    if (shown != size) {
        // With a scaled size, the JPEG reader never holds the whole of a large picture in memory.
        reader.setScaledSize(fitted(size, shown * dotsPerUnit));
    }
    QPixmap picture = QPixmap::fromImageReader(&reader);
    if (picture.isNull()) {
        throw platform::RuntimeError(platform::errors::InvalidPicture);
    }
    if (shown != size) {
        picture.setDevicePixelRatio(std::max(qreal(picture.width()) / shown.width(), //
                                             qreal(picture.height()) / shown.height()));
    }
    return picture;
}

} // namespace controls
