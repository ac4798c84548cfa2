#pragma once

#include "email/settings_file.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "tests/support/temporary_folder.h"

#include <string>
#include <string_view>
#include <vector>

namespace support {

inline std::vector<std::string> goodLines() {
    return {"ShowSetup=no",
            "[MailServer Info]",
            "POPServer=pop.school.example",
            "SMTPServer=smtp.school.example:2525",
            "DomainName=school.example",
            "[Institution Properties]",
            "Institution=Hill School",
            "[Application Options]",
            "PlayWav=yes",
            "ShowDatabase=yes",
            "SendAttachments=yes",
            "SaveDirectory=C:\\Mail",
            "AllowPrinting=yes",
            "SaveCopy=yes",
            "ShowGetMail=yes",
            "GetMailEvery=15",
            "LDAPServer=ldap.school.example",
            "LDAPSearchBase=o=Hill School,c=gb",
            "AddressLookup=Directory Server"};
}

inline std::string joined(const std::vector<std::string>& lines, std::string_view lineEnd = "\r\n") {
    std::string text;
    for (const std::string& line : lines) {
        text.append(line).append(lineEnd);
    }
    return text;
}

/** What is known after the file tolk.ini has been read from a folder of its own. */
struct Reading {
    email::Settings settings;
    email::DerivedValues derived;
    std::vector<bool> setupButton;
    int error = 0;

    /** The texts of all settings, in the order of the file. */
    std::vector<std::string> values() const {
        const email::SettingsFields fields = email::fieldsOf(settings);
        std::vector<std::string> texts;
        for (const QString* field :
             {&fields.ShowSetup, &fields.POPServer, &fields.SMTPServer, &fields.DomainName,
              &fields.Institution, &fields.PlayWav, &fields.ShowDatabase, &fields.SendAttachments,
              &fields.SaveDirectory, &fields.AllowPrinting, &fields.SaveCopy, &fields.ShowGetMail,
              &fields.GetMailEvery, &fields.LDAPServer, &fields.LDAPSearchBase, &fields.AddressLookup}) {
            texts.push_back(field->toStdString());
        }
        return texts;
    }
};

inline Reading readFrom(const support::TemporaryFolder& folder) {
    Reading reading;
    reading.error = platform::errorNumberOf([&] {
        platform::SequentialInput file(folder.qtPath(email::kSettingsFileName));
        email::readSettings([&file] { return file.nextLine(); }, reading.settings, reading.derived,
                            [&](bool visible) { reading.setupButton.push_back(visible); });
    });
    return reading;
}

inline Reading readText(std::string_view text) {
    const support::TemporaryFolder folder;
    folder.write(email::kSettingsFileName, text);
    return readFrom(folder);
}

inline Reading readLines(const std::vector<std::string>& lines) {
    return readText(joined(lines));
}

inline Reading readWithLine(std::size_t number, const std::string& line) {
    std::vector<std::string> lines = goodLines();
    lines.at(number - 1) = line;
    return readLines(lines);
}

inline std::vector<std::string> goodValues() {
    return {"no",
            "pop.school.example",
            "smtp.school.example:2525",
            "school.example",
            "Hill School",
            "yes",
            "yes",
            "yes",
            "C:\\Mail",
            "yes",
            "yes",
            "yes",
            "15",
            "ldap.school.example",
            "o=Hill School,c=gb",
            "Directory Server"};
}

} // namespace support
