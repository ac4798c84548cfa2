#include "email/typed_host.h"

#include "email/state.h"

namespace email {

void useTypedHost(const QString& host) {
    // A second host takes the place of the first one, not of the file's servers.
    if (!state.FileServers) {
        state.FileServers = {settings.POPServer, settings.SMTPServer};
    }
    settings.POPServer = host;
    settings.SMTPServer = host;
    derived.AtDomain = u'@' + host;
}

Settings settingsOfFile() {
    Settings file = settings;
    if (state.FileServers) {
        file.POPServer = state.FileServers->POPServer;
        file.SMTPServer = state.FileServers->SMTPServer;
    }
    return file;
}

} // namespace email
