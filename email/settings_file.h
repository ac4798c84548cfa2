#pragma once

#include "email/settings.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace email {

/** Called as soon as ShowSetup is read, with whether the Setup button is to be shown. */
using ShowSetupButton = std::function<void(bool visible)>;

/** Gives the next line of the file without its line end. \throws RuntimeError 62 when there is none. */
using NextLine = std::function<std::string()>;

/**
 * Takes the 16 settings from the file's 19 lines, by position alone: the keys' names are ignored. Each value
 * is stored as soon as its line is read, so after a failure the earlier settings are the file's and the later
 * ones unchanged. \throws RuntimeError 62 when there are fewer than 19 lines, 13 or 6 when GetMailEvery is no
 * 16-bit number, and whatever nextLine throws.
 */
void readSettings(const NextLine& nextLine, Settings& settings, DerivedValues& derived,
                  const ShowSetupButton& showSetupButton);

/** What stands after the line's first "="; the whole line when it has none. Spaces count. */
std::string valueOfLine(const std::string& line);

/** A line of the file, as it is meant to be. */
struct SettingsLine {
    /** Counted from 1. */
    int number = 0;
    /** The key; for a section its name in brackets. */
    const char* key = "";
    bool isSection = false;
};

/** The file's 19 lines, from the first to the last. */
std::vector<SettingsLine> settingsLines();

/** The 16 fields of the setup window, as texts; named after the keys that they set. */
struct SettingsFields {
    QString ShowSetup;
    QString POPServer;
    QString SMTPServer;
    QString DomainName;
    QString Institution;
    QString PlayWav;
    QString ShowDatabase;
    QString SendAttachments;
    QString SaveDirectory;
    QString AllowPrinting;
    QString SaveCopy;
    QString ShowGetMail;
    QString GetMailEvery;
    QString LDAPServer;
    QString LDAPSearchBase;
    QString AddressLookup;
};

/** The current settings as field texts. */
SettingsFields fieldsOf(const Settings& settings);

/** The current setting of the line with this number, which counts from 1; empty for a section. */
QString settingOfLine(const Settings& settings, int number);

/**
 * The settings file's 19 lines, each ended by CR LF. An empty field writes the current setting instead. Line
 * ends inside a field become spaces, since they would shift every later setting.
 */
std::string settingsFileText(const SettingsFields& fields, const Settings& current);

} // namespace email
