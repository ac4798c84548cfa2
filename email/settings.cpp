#include "email/settings.h"

#include "platform/text.h"
#include "platform/windows_directory.h"

#include <string_view>

namespace email {

bool isYes(const QString& value) {
    return value == QLatin1String("yes");
}

QString GetWinDirectory() {
    return GetWinDirectory(platform::GetWindowsDirectoryA);
}

QString GetWinDirectory(const std::function<std::size_t(char* buffer, std::size_t size)>& call) {
    std::string buffer(260, '\0');
    if (call(buffer.data(), buffer.size()) == 0) {
        return {};
    }
    // The first NUL ends the path; the returned length is not relied on.
    return platform::fromBytes(std::string_view(buffer).substr(0, buffer.find('\0')));
}

} // namespace email
