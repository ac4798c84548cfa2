#include "doctor/settings_seen.h"

#include "components/poplib/pop.h"
#include "components/smtplib/smtp.h"
#include "doctor/server_names.h"
#include "email/titles.h"
#include "platform/runtime_error.h"
#include "platform/sequential_file.h"
#include "platform/text.h"

namespace doctor {

namespace {
QString onOrOff(const QString& value, const char* on, const char* off) {
    return email::isYes(value) ? QLatin1String(on) : QLatin1String(off);
}

QString meaningOfInterval(const email::Settings& settings) {
    return settings.GetMailEvery == 0
               ? QStringLiteral("No automatic check for new mail.")
               : QStringLiteral("A check for new mail every %1 minutes, with a log-on of its own.")
                     .arg(settings.GetMailEvery);
}

QString meaningOfServer(const SettingsRead& read, const QString& key) {
    return key == QLatin1String("POPServer")
               ? meaningOfName(read.settings.POPServer, poplib::POP::kDefaultPorts)
               : meaningOfName(read.settings.SMTPServer, smtplib::SMTP::kDefaultPorts);
}

/** Where Find Address looks, and what that has to do with the directory server. */
QString meaningOfLookUp(const QString& key, const email::Settings& is) {
    const bool inDirectory = is.AddressLookup == QLatin1String("Directory Server");
    if (!email::isYes(is.ShowDatabase)) {
        return QStringLiteral("Not used: there are no Find Address buttons.");
    }
    if (key == QLatin1String("AddressLookup")) {
        return inDirectory ? QStringLiteral("Find Address asks the directory server.")
                           : QStringLiteral("Find Address looks among the senders of waiting mail and in "
                                            "the members' cards below C:\\Contacts\\.");
    }
    if (!inDirectory) {
        return QStringLiteral("Not used: Find Address looks in the members' own address books.");
    }
    return key == QLatin1String("LDAPServer")
               ? QStringLiteral("Find Address asks this server.")
               : QStringLiteral("Find Address searches the directory below this place.");
}

QString meaningOfSwitch(const QString& key, const email::Settings& is) {
    if (key == QLatin1String("ShowSetup")) {
        return onOrOff(is.ShowSetup, "The login window has a Setup button.",
                       "No Setup button; Shift+Ctrl+F9 opens the setup window all the same.");
    }
    if (key == QLatin1String("PlayWav")) {
        return onOrOff(is.PlayWav, "New mail is told by a sound.", "No sound.");
    }
    if (key == QLatin1String("ShowDatabase")) {
        return onOrOff(is.ShowDatabase, "The compose window has its two Find Address buttons.",
                       "No Find Address buttons.");
    }
    if (key == QLatin1String("SendAttachments")) {
        return onOrOff(is.SendAttachments, "Files may be attached to letters.",
                       "No files may be attached to letters.");
    }
    if (key == QLatin1String("AllowPrinting")) {
        return onOrOff(is.AllowPrinting, "Messages may be printed.", "Messages may not be printed.");
    }
    if (key == QLatin1String("SaveCopy")) {
        return onOrOff(is.SaveCopy, "Compose puts the sender into Cc.", "The sender gets no copy.");
    }
    return onOrOff(is.ShowGetMail, "The main window has a button Get New Mail.",
                   "No button; the menu has an entry Log In.");
}

QString meaningOf(const QString& key, const SettingsRead& read) {
    const email::Settings& is = read.settings;
    if (key == QLatin1String("POPServer") || key == QLatin1String("SMTPServer")) {
        return meaningOfServer(read, key);
    }
    if (key == QLatin1String("DomainName")) {
        return QStringLiteral("Members send as their user name and @%1.").arg(is.DomainName);
    }
    if (key == QLatin1String("Institution")) {
        return QStringLiteral("The windows' title is \"%1 E-Mail\".").arg(is.Institution);
    }
    if (key == QLatin1String("SaveDirectory")) {
        return QStringLiteral("An attachment report.txt is saved as %1report.txt.").arg(is.SaveDirectory);
    }
    if (key == QLatin1String("GetMailEvery")) {
        return meaningOfInterval(is);
    }
    if (key.startsWith(QLatin1String("LDAP")) || key == QLatin1String("AddressLookup")) {
        return meaningOfLookUp(key, is);
    }
    return meaningOfSwitch(key, is);
}
} // namespace

std::optional<QString> SettingsRead::value(int line) const {
    const auto index = static_cast<std::size_t>(line - 1);
    return index < lines.size() ? std::optional(platform::fromBytes(email::valueOfLine(lines.at(index))))
                                : std::nullopt;
}

SettingsRead readSettings(const email::NextLine& nextLine) {
    SettingsRead read;
    const auto remembered = [&] {
        read.lines.push_back(nextLine());
        return read.lines.back();
    };
    read.error = platform::errorNumberOf(
        [&] { email::readSettings(remembered, read.settings, read.derived, [](bool /*visible*/) {}); });
    if (read.error == 0) {
        // The end of the file is an error only for those who need another line.
        while (platform::errorNumberOf([&] { static_cast<void>(nextLine()); }) == 0) {
            ++read.linesBehind;
        }
    }
    return read;
}

SettingsRead readSettingsFile() {
    SettingsRead read;
    std::optional<platform::SequentialInput> file;
    read.error = platform::errorNumberOf([&] { file.emplace(QLatin1String(email::kSettingsFileName)); });
    return file ? readSettings([&file] { return file->nextLine(); }) : read;
}

std::vector<SettingSeen> settingsSeen(const SettingsRead& read) {
    std::vector<SettingSeen> seen;
    for (const email::SettingsLine& line : email::settingsLines()) {
        if (line.isSection) {
            continue;
        }
        const QString key = QLatin1String(line.key);
        const auto value = read.value(line.number);
        const QString meaning = meaningOf(key, read);
        seen.push_back(
            {line.number, key, value.value_or(email::settingOfLine(read.settings, line.number)),
             value ? meaning : QStringLiteral("Not in the file, so this value counts. ") + meaning});
    }
    return seen;
}

} // namespace doctor
