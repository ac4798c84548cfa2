#pragma once

#include "components/transport/server_name.h"

#include <QByteArray>

namespace tls {

/**
 * The ticket to resume a TLS session with (RFC 8446 section 2.2, RFC 5077) that this server gave out last;
 * empty for none. Tickets of a server that had to prove its name are kept apart from those of one that had
 * not, as a resumed session shows no certificate.
 */
QByteArray ticketFor(const transport::ServerName& server);

/** Remembers the ticket until the program ends; an empty one is not remembered. */
void keepTicket(const transport::ServerName& server, const QByteArray& ticket);

} // namespace tls
