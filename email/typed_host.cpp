#include "email/typed_host.h"

#include "components/transport/server_name.h"
#include "email/credentials.h"
#include "email/shared_settings.h"

namespace email {

void useTypedHost(const QString& host) {
    // A second typed host replaces the first one; the servers of the file are remembered only once.
    if (!serversOfFile) {
        serversOfFile = {settings.POPServer, settings.SMTPServer};
    }
    settings.POPServer = host;
    settings.SMTPServer = host;
    derived.AtDomain = u'@' + domainOfHost(host);
}

void takeTypedUserName(const QString& typed) {
    const qsizetype at = typed.indexOf(u'@');
    if (at < 0) {
        credentials.UserName = typed;
        credentials.NameAtHost.clear();
        return;
    }
    const QString host = typed.sliced(at + 1);
    credentials.UserName = typed.first(at);
    credentials.NameAtHost = credentials.UserName + u'@' + domainOfHost(host);
    useTypedHost(host);
}

QString domainOfHost(const QString& typed) {
    const auto parts = transport::takenApart(typed);
    if (!parts) {
        return typed;
    }
    return parts->host.contains(u':') ? QStringLiteral("[IPv6:") + parts->host + u']' : parts->host;
}

QString sendingServer() {
    const auto parts = serversOfFile ? transport::takenApart(settings.SMTPServer) : std::nullopt;
    if (!parts) {
        return settings.SMTPServer;
    }
    return parts->scheme + (parts->isBracketed ? u'[' + parts->host + u']' : parts->host);
}

Settings settingsOfFile() {
    Settings file = settings;
    if (serversOfFile) {
        file.POPServer = serversOfFile->POPServer;
        file.SMTPServer = serversOfFile->SMTPServer;
    }
    return file;
}

} // namespace email
