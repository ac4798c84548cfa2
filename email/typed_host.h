#pragma once

#include "email/settings.h"

#include <QString>

#include <optional>

namespace email {

/**
 * Takes the host of a name that was typed as name, "@", host: it is both servers and the senders' domain
 * until the program ends. The settings file is not to hear of it.
 */
void useTypedHost(const QString& host);

/** The two mail servers. */
struct Servers {
    QString POPServer;
    QString SMTPServer;
};

/** What the settings file names, once a host typed at the log-on stands in the settings in its place. */
inline std::optional<Servers> serversOfFile;

/** The settings as the file has them, whatever host was typed: for the setup window, which writes them. */
Settings settingsOfFile();

} // namespace email
