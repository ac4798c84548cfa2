#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <string>

namespace email {

/**
 * The 16 values of the settings file, each named after its key. Switches hold "yes" or "no" and are compared
 * with the exact text "yes".
 */
struct Settings {
    QString ShowSetup = QStringLiteral("yes");
    QString POPServer = QStringLiteral("mail.example.org");
    QString SMTPServer = QStringLiteral("mail.example.org");
    QString DomainName = QStringLiteral("example.org");
    QString Institution = QStringLiteral("Your Name Here");
    QString PlayWav = QStringLiteral("no");
    QString ShowDatabase = QStringLiteral("no");
    QString SendAttachments = QStringLiteral("no");
    QString SaveDirectory = QStringLiteral("A:\\");
    QString AllowPrinting = QStringLiteral("no");
    QString SaveCopy = QStringLiteral("no");
    QString ShowGetMail = QStringLiteral("no");
    /** Minutes between automatic checks for new mail; 0 means none. */
    std::int16_t GetMailEvery = 0;
    QString LDAPServer = QStringLiteral("directory.example.org");
    QString LDAPSearchBase = QStringLiteral("c=us");
    QString AddressLookup = QStringLiteral("Personal Address Book");
};

/** What the reader derives from the settings; never written to the file. */
struct DerivedValues {
    /** "@" and the mail domain, which make an address of a bare user name. */
    QString AtDomain;
    /** The command for the wave player when there is new mail: "play" or "close". */
    QString WavCommand = QStringLiteral("close");
    /** The system-wide configuration directory, learnt at start-up. */
    QString WindowsDirectory;
    /**
     * The title that start-up gives the windows. Null until all settings are read; until then windows keep
     * the titles that they are made with.
     */
    QString WindowTitle;
};

/** The settings file's name; it lies in the current directory, wherever the system-wide directory is. */
inline constexpr const char* kSettingsFileName = "tolk.ini";

/** True for the exact, case-sensitive text "yes". */
bool isYes(const QString& value);

/** The path that the system's own call gives, cut at its first NUL; empty when the call fails. */
QString GetWinDirectory();

/**
 * The same with the caller's own call in place of the system's. It fills the buffer and returns 0 when it
 * fails.
 */
QString GetWinDirectory(const std::function<std::size_t(char* buffer, std::size_t size)>& call);

} // namespace email
