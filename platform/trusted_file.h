#pragma once

#include "platform/private_file.h"

#include <QString>

#include <cstdint>

namespace platform {

/**
 * Opens a plain file, for reading, whose content decides to which server the password goes. Links are
 * followed. Never waits.
 *
 * The file is refused when everybody may write it, and also when it, or a link on the way to it, lies in a
 * folder where everybody may put files and belongs neither to the user nor to root: then any user may have
 * put it there. The rights are those of the very file that is opened, of the links that led to it, and of
 * their folders, so nothing can be exchanged between the check and the opening. Folders further up are
 * trusted, and so is a file system that keeps no rights.
 *
 * \throws RuntimeError 53 when there is no such file, 75 when it is refused, cannot be read or is no plain
 * file, or when a link leads nowhere.
 */
FileDescriptor openTrusted(const QString& nativePath);

/** Whether a file system of this type (statfs(2), f_type) keeps the rights of each file. */
bool keepsRights(std::int64_t fileSystemType) noexcept;

} // namespace platform
