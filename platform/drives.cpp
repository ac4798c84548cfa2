#include "platform/drives.h"

#include "platform/runtime_error.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>

namespace platform {

namespace {
constexpr QChar kBackslash = u'\\';
constexpr QChar kSlash = u'/';

bool isLetter(QChar character) {
    const char16_t lower = character.toLower().unicode();
    return character.unicode() < 0x80 && lower >= u'a' && lower <= u'z';
}

bool hasLetter(const QString& path) {
    return path.size() >= 2 && path.at(1) == u':' && isLetter(path.at(0));
}

QString mountedRemovableVolume() {
    QStringList mountedAt;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (volume.isValid() && volume.isReady()) {
            mountedAt.append(volume.rootPath());
        }
    }
    return removableVolume(mountedAt);
}

QString folderFromEnvironment(QChar letter) {
    const QByteArray name = QByteArrayLiteral("BRINDLEWAKE_DRIVE_") + letter.toLatin1();
    return QFile::decodeName(qgetenv(name.constData()));
}

/** The folder that an upper-case letter stands for; empty when it stands for none. */
QString folderOf(QChar letter) {
    if (QString folder = folderFromEnvironment(letter); !folder.isEmpty()) {
        return folder;
    }
    switch (letter.unicode()) {
    case u'A':
        return mountedRemovableVolume();
    case u'C':
        return QDir::homePath();
    case u'Z':
        return QDir::rootPath();
    default:
        return {};
    }
}

QString nameOf(QChar letter, const QString& folder) {
    if (folder.isEmpty()) {
        return letter + QStringLiteral(":");
    }
    const QString path = QDir::cleanPath(folder);
    QString shown = QFileInfo(path).fileName();
    if (path == QDir::cleanPath(QDir::homePath())) {
        shown = QStringLiteral("home");
    } else if (shown.isEmpty()) {
        shown = path;
    }
    return QStringLiteral("%1: [%2]").arg(letter).arg(shown);
}

/** The rest of the path below the folder, without a separator in front; null when it lies elsewhere. */
QString below(const QString& folder, const QString& path) {
    if (path == folder) {
        return QStringLiteral("");
    }
    const QString front = folder.endsWith(kSlash) ? folder : folder + kSlash;
    return path.startsWith(front) ? path.sliced(front.size()) : QString();
}

QString absolutePath(const QString& path) {
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}
} // namespace

QString nativePath(const QString& drivePath) {
    if (drivePath.contains(QChar(u'\0'))) {
        throw RuntimeError(errors::PathFileAccess);
    }
    QString path = drivePath;
    path.replace(kBackslash, kSlash);
    if (!hasLetter(path)) {
        return path;
    }
    QString folder = folderOf(path.at(0).toUpper());
    if (folder.isEmpty()) {
        throw RuntimeError(errors::DeviceUnavailable);
    }
    qsizetype start = 2;
    while (start < path.size() && path.at(start) == kSlash) {
        ++start;
    }
    const QString rest = path.sliced(start);
    if (!rest.isEmpty() && !folder.endsWith(kSlash)) {
        folder.append(kSlash);
    }
    return folder + rest;
}

QString drivePath(const QString& nativePath) {
    if (nativePath.contains(QChar(u'\0'))) {
        throw RuntimeError(errors::PathFileAccess);
    }
    const QString path = absolutePath(nativePath);
    QChar letter;
    QString rest;
    qsizetype longest = -1;
    for (const Drive& drive : drives()) {
        if (drive.folder.isEmpty()) {
            continue;
        }
        const QString folder = absolutePath(drive.folder);
        const QString found = below(folder, path);
        if (!found.isNull() && folder.size() > longest) {
            longest = folder.size();
            letter = drive.letter;
            rest = found;
        }
    }
    // The folders that a letter stands for may well have a backslash in their names; what follows may not.
    if (longest < 0 || rest.contains(kBackslash)) {
        throw RuntimeError(errors::PathFileAccess);
    }
    return letter + QStringLiteral(":\\") + rest.replace(kSlash, kBackslash);
}

std::vector<Drive> drives() {
    std::vector<Drive> all;
    for (char16_t code = u'A'; code <= u'Z'; ++code) {
        const QChar letter(code);
        const QString folder = folderOf(letter);
        if (!folder.isEmpty() || code == u'A') {
            all.push_back({letter, folder, nameOf(letter, folder), QFileInfo(folder).isDir()});
        }
    }
    return all;
}

QString removableVolume(const QStringList& mountedAt) {
    const auto found = std::find_if(mountedAt.begin(), mountedAt.end(), [](const QString& folder) {
        return folder.startsWith(QLatin1String("/media/")) || folder.startsWith(QLatin1String("/run/media/"));
    });
    return found == mountedAt.end() ? QString() : *found;
}

} // namespace platform
