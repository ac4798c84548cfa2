#include "email/own_files.h"

#include "email/settings.h"
#include "platform/drives.h"
#include "platform/file_place.h"

#include <algorithm>
#include <initializer_list>

namespace email {

bool isOwnFile(const QString& drivePath) {
    const std::initializer_list<const char*> own{kSettingsFileName, kLogoFileName, kNewMailSoundFileName,
                                                 kEncodedAttachmentFileName, kEncodedOutgoingFileName};
    const QString path = platform::nativePath(drivePath);
    return std::any_of(own.begin(), own.end(), [&path](const char* name) {
        return platform::isSamePlace(path, platform::nativePath(QLatin1String(name)));
    });
}

} // namespace email
