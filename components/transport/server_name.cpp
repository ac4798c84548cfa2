#include "components/transport/server_name.h"

#include <array>

namespace transport {

namespace {
struct Scheme {
    QLatin1String text;
    Security security;
    std::uint16_t DefaultPorts::*port;
};

constexpr std::array<Scheme, 3> kSchemes = {{
    {QLatin1String("tls://"), Security::FromTheStart, &DefaultPorts::tls},
    {QLatin1String("starttls://"), Security::Demanded, &DefaultPorts::startTls},
    {QLatin1String("plain://"), Security::Never, &DefaultPorts::plain},
}};

constexpr Scheme kNoScheme{QLatin1String(""), Security::WhenOffered, &DefaultPorts::plain};

const Scheme& schemeOf(const QString& name) {
    for (const Scheme& scheme : kSchemes) {
        if (name.startsWith(scheme.text, Qt::CaseInsensitive)) {
            return scheme;
        }
    }
    return kNoScheme;
}

std::optional<std::uint16_t> portNumber(const QString& port) {
    bool isNumber = false;
    const std::uint16_t number = port.toUShort(&isNumber);
    return isNumber && number > 0 && port.at(0).isDigit() ? std::optional(number) : std::nullopt;
}
} // namespace

std::optional<TypedServerName> takenApart(const QString& typed) {
    QString name = typed.trimmed();
    TypedServerName parts;
    parts.scheme = name.first(schemeOf(name).text.size());
    name = name.sliced(parts.scheme.size()).trimmed();
    parts.isBracketed = name.startsWith(u'[');
    bool portGiven = false;
    if (parts.isBracketed) {
        const qsizetype bracket = name.indexOf(u']');
        if (bracket < 0) {
            return std::nullopt;
        }
        parts.host = name.sliced(1, bracket - 1);
        const QString rest = name.sliced(bracket + 1);
        if (!rest.isEmpty() && !rest.startsWith(u':')) {
            return std::nullopt;
        }
        portGiven = !rest.isEmpty();
        parts.port = rest.mid(1);
    } else if (name.count(u':') == 1) {
        portGiven = true;
        const qsizetype colon = name.indexOf(u':');
        parts.host = name.first(colon);
        parts.port = name.sliced(colon + 1);
    } else {
        parts.host = name;
    }
    const bool isScheme = parts.host.contains(QLatin1String("://"));
    if (parts.host.isEmpty() || isScheme || (portGiven && !portNumber(parts.port))) {
        return std::nullopt;
    }
    return parts;
}

std::optional<ServerName> parseServerName(const QString& typed, const DefaultPorts& ports) {
    const auto parts = takenApart(typed);
    if (!parts) {
        return std::nullopt;
    }
    const Scheme& scheme = schemeOf(parts->scheme);
    ServerName server{parts->host, ports.*scheme.port, scheme.security};
    if (!parts->port.isEmpty()) {
        server.port = *portNumber(parts->port);
    }
    // Behind this port servers expect nothing else.
    if (server.security == Security::WhenOffered && server.port == ports.tls) {
        server.security = Security::FromTheStart;
    }
    return server;
}

} // namespace transport
