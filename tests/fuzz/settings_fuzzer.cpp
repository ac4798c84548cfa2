// Reading settings either takes the values or raises a documented error. Settings that were read, written and
// read again are the same.

#include "email/settings_file.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

#include <QString>

#include <filesystem>
#include <string>

namespace {

namespace errors = platform::errors;

struct Read {
    email::Settings settings;
    email::DerivedValues derived;
    int error = 0;
};

Read read(std::string_view content) {
    static const support::TemporaryFolder folder(std::filesystem::temp_directory_path());
    folder.write("settings", content);
    Read result;
    result.error = platform::errorNumberOf([&] {
        platform::SequentialInput input(folder.qtPath("settings"));
        email::readSettings([&input] { return input.nextLine(); }, result.settings, result.derived,
                            [](bool) {});
    });
    return result;
}

bool isYesOrNo(const QString& value) {
    return value == QLatin1String("yes") || value == QLatin1String("no");
}

/** True for the same texts. An empty value is written as the current setting, which is the same one here. */
bool same(const email::SettingsFields& left, const email::SettingsFields& right) {
    using Fields = email::SettingsFields;
    for (QString Fields::*const field :
         {&Fields::ShowSetup, &Fields::POPServer, &Fields::SMTPServer, &Fields::DomainName,
          &Fields::Institution, &Fields::PlayWav, &Fields::ShowDatabase, &Fields::SendAttachments,
          &Fields::SaveDirectory, &Fields::AllowPrinting, &Fields::SaveCopy, &Fields::ShowGetMail,
          &Fields::GetMailEvery, &Fields::LDAPServer, &Fields::LDAPSearchBase, &Fields::AddressLookup}) {
        if (left.*field != right.*field) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Read first = read(fuzz::Input(data, size).rest());
    fuzz::require(first.error == 0 || first.error == errors::InputPastEndOfFile ||
                      first.error == errors::TypeMismatch || first.error == errors::Overflow ||
                      first.error == errors::OutOfMemory,
                  "only documented errors are raised");
    fuzz::require(isYesOrNo(first.settings.ShowSetup) && isYesOrNo(first.settings.PlayWav) &&
                      isYesOrNo(first.settings.ShowDatabase) && isYesOrNo(first.settings.SendAttachments),
                  "switches that are normalised hold yes or no");

    const email::SettingsFields fields = email::fieldsOf(first.settings);
    const Read second = read(email::settingsFileText(fields, first.settings));
    fuzz::require(second.error == 0, "what was written can be read");
    fuzz::require(same(fields, email::fieldsOf(second.settings)), "what was written reads back as it was");
    fuzz::require(second.derived.AtDomain == u'@' + second.settings.DomainName,
                  "AtDomain follows the domain");
    return 0;
}
