#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace transport {

struct ServerName {
    QString host;
    std::uint16_t port = 0;

    bool operator==(const ServerName&) const = default;
};

/**
 * Reads `host`, `host:port`, `[address]` or `[address]:port`; an IPv6 address without brackets is a host.
 * Returns nothing when there is no host or the port is not a number from 1 to 65535.
 */
std::optional<ServerName> parseServerName(const QString& typed, std::uint16_t defaultPort);

} // namespace transport
