#pragma once

#include "email/settings.h"

#include <QString>

#include <optional>

namespace email {

/**
 * Uses the host of a user name that was typed as name@host for both servers, until the program ends. It must
 * not be written to the settings file. It is the senders' domain as well, without scheme and port.
 */
void useTypedHost(const QString& host);

/**
 * Takes the name that a member has typed at the log-on into the credentials. One typed as name@host also sets
 * the servers and the domain, as useTypedHost() does.
 */
void takeTypedUserName(const QString& typed);

/**
 * A host as the domain of an address: without scheme and port, an IPv6 address as a literal (RFC 5321 section
 * 4.1.3). A text that names no server is returned as it is.
 */
QString domainOfHost(const QString& typed);

/**
 * The name of the server to send through. A port that was typed with the host is that of the POP3 server, so
 * only the scheme of such a host counts here.
 */
QString sendingServer();

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
