#pragma once

#include <QString>

namespace platform {

/**
 * Whether two paths of the system lead to one file, or would once it is made: by links of any kind, through
 * folders with several names, or in letters of another case on a file system that ignores case. While neither
 * file exists, it is unknown whether the file system ignores case, so the names are compared without case.
 */
bool isSamePlace(const QString& nativePath, const QString& otherNativePath);

} // namespace platform
