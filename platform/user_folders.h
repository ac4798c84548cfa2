#pragma once

#include "platform/private_file.h"

#include <QString>
#include <QStringList>

namespace platform {

// Folders of the user's own, outside the folder that the program works in. Both belong to the user and are
// closed to all other users (mode 0700). They are made when they are missing.

/** A folder's path, and the folder open: another folder cannot take the place of the open one. */
struct UserFolder {
    QString path;
    FileDescriptor folder;
};

/**
 * The folder for what outlives the program: `brindlewake` below $XDG_STATE_HOME, or below ~/.local/state.
 * \throws RuntimeError 75 when it cannot be made, or is another user's.
 */
UserFolder stateFolder();

/** The path of stateFolder(), which is not made. */
QString stateFolderPath();

/**
 * The folder for what is worth nothing after the user has logged out: `brindlewake` below $XDG_RUNTIME_DIR,
 * or below /run/user/<number of the user>; the state folder where the system has no such place.
 * \throws RuntimeError 75 when none can be made, or is another user's.
 */
UserFolder runtimeFolder();

/** Where runtimeFolder() looks before it takes the state folder; nothing is made. */
QStringList runtimeFolderPaths();

} // namespace platform
