#pragma once

#include <QString>

namespace email {

// Besides the settings file, these are the files that have fixed names. A relative name is in the current
// folder.
inline constexpr const char* kLogoFileName = "tolk.jpg";
inline constexpr const char* kNewMailSoundFileName = "Gotmail.wav";
/** The encoded content of the attachment that was found last. */
inline constexpr const char* kEncodedAttachmentFileName = "_tolk.tmp";
/** The encoded content of the attachment that is sent. */
inline constexpr const char* kEncodedOutgoingFileName = "C:\\_brndwake.tmp";

/**
 * Whether the drive path, however it is spelt, leads to one of the program's own files, the settings file
 * included, or would if that file existed (see platform::isSamePlace()). An attachment that a stranger has
 * sent must not replace such a file. Looks at the disk. \throws RuntimeError 68, 75 as platform::nativePath()
 * does.
 */
bool isOwnFile(const QString& drivePath);

} // namespace email
