#include "addresses/source_in_use.h"

#include "addresses/directory_source.h"
#include "addresses/personal_book.h"
#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "platform/drives.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <utility>

namespace addresses {

namespace {
std::function<std::unique_ptr<AddressSource>()>& standInForTests() {
    static std::function<std::unique_ptr<AddressSource>()> standIn;
    return standIn;
}

PersonalSources personalSources() {
    PersonalSources sources;
    // On a drive that stands for nothing there are no cards.
    const int error = platform::errorNumberOf(
        [&] { sources.cardFolder = platform::nativePath(QStringLiteral("C:\\Contacts")); });
    if (error != 0) {
        sources.cardFolder.clear();
    }
    sources.senders.assign(email::mailbox.Senders.rbegin(), email::mailbox.Senders.rend());
    return sources;
}

DirectorySettings directorySettings() {
    DirectorySettings directory;
    directory.server = platform::toBytes(email::settings.LDAPServer);
    directory.base = platform::toBytes(email::settings.LDAPSearchBase);
    directory.user = platform::toBytes(email::credentials.UserName);
    directory.password = platform::toBytes(email::credentials.Password);
    return directory;
}
} // namespace

std::unique_ptr<AddressSource> makeSourceInUse() {
    if (const auto& standIn = standInForTests()) {
        return standIn();
    }
    if (email::settings.AddressLookup == QLatin1String("Directory Server")) {
        return makeDirectorySource(directorySettings());
    }
    return makePersonalBook(personalSources());
}

void replaceSourceInUse(std::function<std::unique_ptr<AddressSource>()> standIn) {
    standInForTests() = std::move(standIn);
}

} // namespace addresses
