#include "components/transport/server_name.h"

namespace transport {

std::optional<ServerName> parseServerName(const QString& typed, std::uint16_t defaultPort) {
    const QString name = typed.trimmed();
    QString host = name;
    QString port;
    bool portGiven = false;
    if (name.startsWith(u'[')) {
        const qsizetype bracket = name.indexOf(u']');
        if (bracket < 0) {
            return std::nullopt;
        }
        host = name.sliced(1, bracket - 1);
        const QString rest = name.sliced(bracket + 1);
        if (!rest.isEmpty() && !rest.startsWith(u':')) {
            return std::nullopt;
        }
        portGiven = !rest.isEmpty();
        port = rest.mid(1);
    } else if (name.count(u':') == 1) {
        portGiven = true;
        const qsizetype colon = name.indexOf(u':');
        host = name.first(colon);
        port = name.sliced(colon + 1);
    }
    if (host.isEmpty()) {
        return std::nullopt;
    }
    if (!portGiven) {
        return ServerName{host, defaultPort};
    }
    bool isNumber = false;
    const std::uint16_t number = port.toUShort(&isNumber);
    if (!isNumber || number == 0 || !port.at(0).isDigit()) {
        return std::nullopt;
    }
    return ServerName{host, number};
}

} // namespace transport
