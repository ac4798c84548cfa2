#include "app/version.h"

#include "components/transport/stream.h"

#include <QtGlobal>

QString programVersion() {
    return QStringLiteral(BRINDLEWAKE_VERSION);
}

QString versionText() {
    const QString tls = transport::tlsLibraryVersion();
    return QStringLiteral("Brindlewake %1\nQt %2\n%3\n")
        .arg(programVersion(), QLatin1String(qVersion()),
             tls.isEmpty() ? QStringLiteral("no TLS: libbrindlewake_tls.so cannot be loaded") : tls);
}
