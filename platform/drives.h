#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace platform {

// Settings and messages name files by drive paths, such as "C:\DOCS\REPORT.TXT". The system has no drives,
// so letters stand for folders:
//   C:  the user's home folder
//   A:  the first removable volume, mounted below /media or /run/media
//   Z:  the root of the file system
// The environment's BRINDLEWAKE_DRIVE_<LETTER> names another folder for a letter, or one for a further
// letter.

/** One entry of a drive list. */
struct Drive {
    /** Upper case. */
    QChar letter;
    /** What the letter stands for; empty when nothing is mounted there. */
    QString folder;
    /** As shown: "C: [home]", or the letter alone for an empty drive. */
    QString name;
    bool ready = false;
};

/**
 * The system's own path for a drive path. Backslashes separate, slashes too; letters count in either case. A
 * path without a backslash after the colon starts at the drive's folder as well: a drive has no current
 * folder. A path without a letter stays as typed, relative to the current folder unless it begins with a
 * separator.
 * \throws RuntimeError 68 for a letter that stands for nothing, 75 for a path with a NUL in it.
 */
QString nativePath(const QString& drivePath);

/**
 * The drive path for a path of the system, which is made absolute: on the drive whose folder leads furthest
 * towards it, Z: for want of another. Nothing is looked up, so the file need not exist and links stay as
 * they are.
 * \throws RuntimeError 75 for a path that no drive path can name: a file's own name may contain a backslash
 * here, which a drive path would take for a separator; or a NUL; or Z: stands for a folder somewhere else.
 */
QString drivePath(const QString& nativePath);

/** All drives in the order of their letters. A: is always among them, ready or not. */
std::vector<Drive> drives();

/** The first of these folders, where volumes are mounted, that is a removable volume; empty when none is. */
QString removableVolume(const QStringList& mountedAt);

} // namespace platform
