#include "components/controls/picture.h"

#include "platform/runtime_error.h"

#include <QFileInfo>
#include <QImageReader>

#include <algorithm>

namespace controls {

namespace {
/** Makes the size fit into the room, and no side of it nothing; a size that fits stays. */
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
        // The reader of JPEG never has the whole of a large picture in memory then.
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
