#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace platform {

// Settings and messages name files by drive paths, such as "C:\DOCS\REPORT.TXT". The system has no drives, so
// letters stand for folders:
//   C:  the user's home folder
//   A:  the first removable volume, mounted below /media or /run/media
//   Z:  the root of the file system
// The environment variable BRINDLEWAKE_DRIVE_<LETTER> gives a letter another folder, or adds a letter.

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
 * The system's own path for a drive path. Both backslashes and slashes separate, and a letter may have either
 * case. A path without a backslash after the colon starts at the drive's folder as well: a drive has no
 * current folder. A path without a letter stays as typed, relative to the current folder unless it begins
 * with a separator.
 * \throws RuntimeError 68 for a letter that stands for nothing, 75 for a path with a NUL in it.
 */
QString nativePath(const QString& drivePath);

/**
 * The drive path for a path of the system, which is made absolute: on the drive with the deepest folder that
 * contains it, or else on Z:. Nothing is looked up, so the file need not exist and links stay as they are.
 * \throws RuntimeError 75 for a path that no drive path can name. It may contain a backslash, which is an
 * ordinary character here but a separator in a drive path; or a NUL; or Z: may stand for another folder than
 * the root.
 */
QString drivePath(const QString& nativePath);

/** All drives in the order of their letters. A: is always among them, ready or not. */
std::vector<Drive> drives();

/** The first removable volume among these folders, in which volumes are mounted; empty when there is none. */
QString removableVolume(const QStringList& mountedAt);

} // namespace platform
