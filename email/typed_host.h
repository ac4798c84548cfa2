#pragma once

#include "email/settings.h"

#include <QString>

#include <optional>

namespace email {

/**
 * Uses the host of a user name that was typed as name@host for both servers and as the senders' domain, until
 * the program ends. It must not be written to the settings file.
 */
void useTypedHost(const QString& host);

/** The two mail servers. */
struct Servers {
    QString POPServer;
    QString SMTPServer;
};

/**
 * The servers that the settings file names, while a host typed at the log-on replaces them in the settings.
 */
inline std::optional<Servers> serversOfFile;

/** The settings as the file has them, whatever host was typed: for the setup window, which writes them. */
Settings settingsOfFile();

} // namespace email
