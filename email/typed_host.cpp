#include "email/typed_host.h"

#include "email/shared_settings.h"

namespace email {

void useTypedHost(const QString& host) {
    // A second typed host replaces the first one; the servers of the file are remembered only once.
    if (!serversOfFile) {
        serversOfFile = {settings.POPServer, settings.SMTPServer};
    }
    settings.POPServer = host;
    settings.SMTPServer = host;
    derived.AtDomain = u'@' + host;
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
