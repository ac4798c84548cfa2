#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace transport {

/** What a connection to a server promises, as the spelling of the server's name says. */
enum class Security {
    /** The connection is never encrypted: `plain://`. */
    Never,
    /** It is encrypted where the server offers it, whoever the server is (RFC 7435): no scheme. */
    WhenOffered,
    /** It is encrypted before anything is said that matters, or not used at all: `starttls://`. */
    Demanded,
    /** It is encrypted from its first byte (RFC 8314): `tls://`. */
    FromTheStart
};

/** True when the server has to prove by a certificate that the name is its own. */
constexpr bool mustBeProven(Security security) noexcept {
    return security == Security::Demanded || security == Security::FromTheStart;
}

/** The ports of one protocol. */
struct DefaultPorts {
    std::uint16_t plain = 0;
    /** For connections that are encrypted from the first byte; they are expected there without a scheme. */
    std::uint16_t tls = 0;
    std::uint16_t startTls = 0;
};

struct ServerName {
    QString host;
    std::uint16_t port = 0;
    Security security = Security::WhenOffered;

    bool operator==(const ServerName&) const = default;
};

/** The parts of a server's name as they were typed, without the blanks around it. */
struct TypedServerName {
    /** With "://", empty for none. */
    QString scheme;
    /** Without brackets. */
    QString host;
    bool isBracketed = false;
    /** Empty for none. */
    QString port;
};

/**
 * Takes a name apart: `host`, `host:port`, `[address]` or `[address]:port`, behind `tls://`, `starttls://` or
 * `plain://` in any case, or behind nothing. An IPv6 address without brackets is a host. Returns nothing for
 * an unknown scheme, for no host, and for a port that is not a number from 1 to 65535.
 */
std::optional<TypedServerName> takenApart(const QString& typed);

/** Reads a server's name, in the spellings of takenApart(); returns nothing where that does. */
std::optional<ServerName> parseServerName(const QString& typed, const DefaultPorts& ports);

} // namespace transport
