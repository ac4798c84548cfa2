#include "components/controls/picture.h"

#include "platform/runtime_error.h"

#include <QFileInfo>
#include <QImageReader>

namespace controls {

QPixmap LoadPicture(const QString& fileName) {
    if (fileName.isEmpty()) {
        return {};
    }
    if (!QFileInfo(fileName).isFile()) {
        throw platform::RuntimeError(platform::errors::FileNotFound);
    }
    QImageReader reader(fileName);
    QPixmap picture = QPixmap::fromImageReader(&reader);
    if (picture.isNull()) {
        throw platform::RuntimeError(kInvalidPicture);
    }
    return picture;
}

} // namespace controls
