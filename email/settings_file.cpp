#include "email/settings_file.h"

#include "platform/text.h"

#include <array>

namespace email {

namespace {
enum class Reading { AsItStands, YesOrNo };

/** One line of the file: a section's name, or a setting's key and the places where its value is stored. */
struct Line {
    const char* text;
    QString SettingsFields::*field = nullptr;
    /** Null for GetMailEvery, the only number. */
    QString Settings::*value = nullptr;
    Reading reading = Reading::AsItStands;

    bool isSection() const { return field == nullptr; }
};

/** The file, from its first line to its last. */
constexpr std::array<Line, 19> kLines = {{
    {"ShowSetup", &SettingsFields::ShowSetup, &Settings::ShowSetup, Reading::YesOrNo},
    {"[MailServer Info]"},
    {"POPServer", &SettingsFields::POPServer, &Settings::POPServer},
    {"SMTPServer", &SettingsFields::SMTPServer, &Settings::SMTPServer},
    {"DomainName", &SettingsFields::DomainName, &Settings::DomainName},
    {"[Institution Properties]"},
    {"Institution", &SettingsFields::Institution, &Settings::Institution},
    {"[Application Options]"},
    {"PlayWav", &SettingsFields::PlayWav, &Settings::PlayWav, Reading::YesOrNo},
    {"ShowDatabase", &SettingsFields::ShowDatabase, &Settings::ShowDatabase, Reading::YesOrNo},
    {"SendAttachments", &SettingsFields::SendAttachments, &Settings::SendAttachments, Reading::YesOrNo},
    // From here on the values are kept as written; the code that uses one compares it with "yes".
    {"SaveDirectory", &SettingsFields::SaveDirectory, &Settings::SaveDirectory},
    {"AllowPrinting", &SettingsFields::AllowPrinting, &Settings::AllowPrinting},
    {"SaveCopy", &SettingsFields::SaveCopy, &Settings::SaveCopy},
    {"ShowGetMail", &SettingsFields::ShowGetMail, &Settings::ShowGetMail},
    {"GetMailEvery", &SettingsFields::GetMailEvery},
    {"LDAPServer", &SettingsFields::LDAPServer, &Settings::LDAPServer},
    {"LDAPSearchBase", &SettingsFields::LDAPSearchBase, &Settings::LDAPSearchBase},
    {"AddressLookup", &SettingsFields::AddressLookup, &Settings::AddressLookup},
}};

QString onOneLine(QString value) {
    value.replace(u'\r', u' ');
    value.replace(u'\n', u' ');
    return value;
}

void store(const Line& line, const QString& value, Settings& settings) {
    if (line.value == nullptr) {
        settings.GetMailEvery = platform::toInteger16(value);
    } else if (line.reading == Reading::YesOrNo) {
        settings.*line.value = isYes(value) ? QStringLiteral("yes") : QStringLiteral("no");
    } else {
        settings.*line.value = value;
    }
}

/** Derives what follows from this line's setting, at once, because reading the next line may fail. */
void derive(const Line& line, const Settings& settings, DerivedValues& derived) {
    if (line.value == &Settings::DomainName) {
        derived.AtDomain = u'@' + settings.DomainName;
    } else if (line.value == &Settings::PlayWav) {
        derived.WavCommand = isYes(settings.PlayWav) ? QStringLiteral("play") : QStringLiteral("close");
    }
}
} // namespace

std::vector<SettingsLine> settingsLines() {
    std::vector<SettingsLine> lines;
    lines.reserve(kLines.size());
    for (const Line& line : kLines) {
        lines.push_back({static_cast<int>(lines.size()) + 1, line.text, line.isSection()});
    }
    return lines;
}

std::string valueOfLine(const std::string& line) {
    // Without "=" inStr() returns 0, and the whole line is the value.
    return line.substr(platform::inStr(1, line, "="));
}

void readSettings(const NextLine& nextLine, Settings& settings, DerivedValues& derived,
                  const ShowSetupButton& showSetupButton) {
    for (const Line& line : kLines) {
        const std::string read = nextLine();
        if (line.isSection()) {
            continue;
        }
        store(line, platform::fromBytes(valueOfLine(read)), settings);
        derive(line, settings, derived);
        if (line.value == &Settings::ShowSetup) {
            showSetupButton(isYes(settings.ShowSetup));
        }
    }
}

SettingsFields fieldsOf(const Settings& settings) {
    SettingsFields fields;
    for (const Line& line : kLines) {
        if (!line.isSection()) {
            fields.*line.field =
                line.value != nullptr ? settings.*line.value : QString::number(settings.GetMailEvery);
        }
    }
    return fields;
}

QString settingOfLine(const Settings& settings, int number) {
    const Line& line = kLines.at(static_cast<std::size_t>(number) - 1);
    return line.isSection() ? QString() : fieldsOf(settings).*line.field;
}

std::string settingsFileText(const SettingsFields& fields, const Settings& current) {
    const SettingsFields old = fieldsOf(current);
    QString text;
    for (const Line& line : kLines) {
        text += QLatin1String(line.text);
        if (!line.isSection()) {
            const QString& value = (fields.*line.field).isEmpty() ? old.*line.field : fields.*line.field;
            text += u'=' + onOneLine(value);
        }
        text += QLatin1String("\r\n");
    }
    return platform::toBytes(text);
}

} // namespace email
