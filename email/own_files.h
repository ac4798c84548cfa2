#pragma once

#include <QString>

namespace email {

// Besides the settings file these are the files that the program has fixed names for. A relative name is one
// in the current folder.
inline constexpr const char* kLogoFileName = "tolk.jpg";
inline constexpr const char* kNewMailSoundFileName = "Gotmail.wav";
/** The encoded content of the attachment that was found last. */
inline constexpr const char* kEncodedAttachmentFileName = "_tolk.tmp";
/** The encoded content of the attachment that is sent. */
inline constexpr const char* kEncodedOutgoingFileName = "C:\\_brndwake.tmp";

/**
 * Whether the drive path leads to one of the program's own files, the settings file included, or would if it
 * were there: nothing that a stranger has sent may come in its place. However the path is spelt; see
 * platform::isSamePlace(). Looks at the disk. \throws RuntimeError 68, 75 as platform::nativePath() does.
 */
bool isOwnFile(const QString& drivePath);

} // namespace email
