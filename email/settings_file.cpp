#include "email/settings_file.h"

#include "platform/text.h"

namespace email {

namespace {
QString yesOrNo(const QString& value) {
    return isYes(value) ? QStringLiteral("yes") : QStringLiteral("no");
}

QString onOneLine(QString value) {
    value.replace(u'\r', u' ');
    value.replace(u'\n', u' ');
    return value;
}
} // namespace

std::string valueOfLine(const std::string& line) {
    // Without "=" the position is 0, and the last (length - 0) characters are the whole line.
    return line.substr(platform::inStr(1, line, "="));
}

void readSettings(const NextLine& nextLine, Settings& settings, DerivedValues& derived,
                  const ShowSetupButton& showSetupButton) {
    const auto value = [&nextLine] { return platform::fromBytes(valueOfLine(nextLine())); };
    settings.ShowSetup = yesOrNo(value());
    showSetupButton(isYes(settings.ShowSetup));
    nextLine(); // [MailServer Info]
    settings.POPServer = value();
    settings.SMTPServer = value();
    settings.DomainName = value();
    derived.AtDomain = u'@' + settings.DomainName;
    nextLine(); // [Institution Properties]
    settings.Institution = value();
    nextLine(); // [Application Options]
    settings.PlayWav = yesOrNo(value());
    derived.WavCommand = isYes(settings.PlayWav) ? QStringLiteral("play") : QStringLiteral("close");
    settings.ShowDatabase = yesOrNo(value());
    settings.SendAttachments = yesOrNo(value());
    // From here on the values stay as they are written; whoever uses one compares it with "yes".
    settings.SaveDirectory = value();
    settings.AllowPrinting = value();
    settings.SaveCopy = value();
    settings.ShowGetMail = value();
    settings.GetMailEvery = platform::toInteger16(value());
    settings.LDAPServer = value();
    settings.LDAPSearchBase = value();
    settings.AddressLookup = value();
}

SettingsFields fieldsOf(const Settings& settings) {
    return {settings.ShowSetup,
            settings.POPServer,
            settings.SMTPServer,
            settings.DomainName,
            settings.Institution,
            settings.PlayWav,
            settings.ShowDatabase,
            settings.SendAttachments,
            settings.SaveDirectory,
            settings.AllowPrinting,
            settings.SaveCopy,
            settings.ShowGetMail,
            QString::number(settings.GetMailEvery),
            settings.LDAPServer,
            settings.LDAPSearchBase,
            settings.AddressLookup};
}

std::string settingsFileText(const SettingsFields& fields, const Settings& current) {
    const SettingsFields old = fieldsOf(current);
    QString text;
    const auto section = [&text](QLatin1String line) { text += line + QLatin1String("\r\n"); };
    const auto setting = [&](QLatin1String key, QString SettingsFields::*field) {
        const QString& value = (fields.*field).isEmpty() ? old.*field : fields.*field;
        text += key + u'=' + onOneLine(value) + QLatin1String("\r\n");
    };
    setting(QLatin1String("ShowSetup"), &SettingsFields::ShowSetup);
    section(QLatin1String("[MailServer Info]"));
    setting(QLatin1String("POPServer"), &SettingsFields::POPServer);
    setting(QLatin1String("SMTPServer"), &SettingsFields::SMTPServer);
    setting(QLatin1String("DomainName"), &SettingsFields::DomainName);
    section(QLatin1String("[Institution Properties]"));
    setting(QLatin1String("Institution"), &SettingsFields::Institution);
    section(QLatin1String("[Application Options]"));
    setting(QLatin1String("PlayWav"), &SettingsFields::PlayWav);
    setting(QLatin1String("ShowDatabase"), &SettingsFields::ShowDatabase);
    setting(QLatin1String("SendAttachments"), &SettingsFields::SendAttachments);
    setting(QLatin1String("SaveDirectory"), &SettingsFields::SaveDirectory);
    setting(QLatin1String("AllowPrinting"), &SettingsFields::AllowPrinting);
    setting(QLatin1String("SaveCopy"), &SettingsFields::SaveCopy);
    setting(QLatin1String("ShowGetMail"), &SettingsFields::ShowGetMail);
    setting(QLatin1String("GetMailEvery"), &SettingsFields::GetMailEvery);
    setting(QLatin1String("LDAPServer"), &SettingsFields::LDAPServer);
    setting(QLatin1String("LDAPSearchBase"), &SettingsFields::LDAPSearchBase);
    setting(QLatin1String("AddressLookup"), &SettingsFields::AddressLookup);
    return platform::toBytes(text);
}

} // namespace email
