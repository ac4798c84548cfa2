#pragma once

#include <QString>

namespace platform {

/**
 * Whether two paths of the system lead to one file, or would once it is made: by links of any kind, through
 * folders under several names, or in letters of another case on a file system that does not tell them apart.
 * While neither file is there nobody can say what their file system does, so there case never counts.
 */
bool isSamePlace(const QString& nativePath, const QString& otherNativePath);

} // namespace platform
