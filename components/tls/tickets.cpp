#include "components/tls/tickets.h"

#include <map>
#include <tuple>

namespace tls {

namespace {
using Key = std::tuple<QString, std::uint16_t, bool>;

Key keyOf(const transport::ServerName& server) {
    return {server.host, server.port, mustBeProven(server.security)};
}

std::map<Key, QByteArray>& tickets() {
    static std::map<Key, QByteArray> all;
    return all;
}
} // namespace

QByteArray ticketFor(const transport::ServerName& server) {
    const auto found = tickets().find(keyOf(server));
    return found == tickets().end() ? QByteArray() : found->second;
}

void keepTicket(const transport::ServerName& server, const QByteArray& ticket) {
    if (!ticket.isEmpty()) {
        tickets()[keyOf(server)] = ticket;
    }
}

} // namespace tls
