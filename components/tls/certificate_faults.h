#pragma once

#include "components/transport/stream.h"

#include <QList>
#include <QSslCertificate>
#include <QSslError>

namespace tls {

/**
 * What is wrong with a server's certificate, Done for nothing. Of several faults the first one counts in the
 * order IssuerNotTrusted, OtherName, NotValidNow. A fault of any other kind, such as a purpose that is not a
 * server's, means that the certificate cannot be trusted either.
 *
 * The host is compared with the certificate's names as RFC 6125 section 6.4 has it: an address with
 * addresses only, a host name with the common name only where there is no other name.
 */
transport::Outcome faultOf(const QList<QSslError>& errors, const QSslCertificate& certificate,
                           const QString& host);

} // namespace tls
