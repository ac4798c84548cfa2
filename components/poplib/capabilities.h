#pragma once

#include "components/poplib/questions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace poplib {

/** What a server has said that it can do (RFC 2449 section 5, RFC 2595, 5034, 6856). */
struct Capabilities {
    /** The server has answered at all; an old one does not know the question. */
    bool known = false;
    bool stls = false;
    bool user = false;
    bool utf8 = false;
    bool top = false;
    /** Commands may be sent ahead of their replies (RFC 2449 section 6.6). */
    bool pipelining = false;
    /** Least seconds between two log-ons of one user, as announced (RFC 2449 section 6.7). */
    std::optional<std::int32_t> loginDelay;
    /** Names of the mechanisms of AUTH, in capitals. */
    std::vector<std::string> mechanisms;
    /** All lines, as the server has said them. */
    std::vector<std::string> lines;

    /** Adds a line of the response to CAPA. Keywords may be in any case; others are ignored. */
    void add(std::string_view line);

    bool offers(std::string_view mechanism) const;
};

/** What a session has shown of a server, so that the next one need not ask. */
struct KnownServer {
    /** The response to CAPA before the log-on; of a connection in clear that is then encrypted, before that.
     */
    std::optional<Capabilities> atFirst;
    std::optional<Capabilities> behindStls;
    /** The server answers commands that are sent ahead, though it does not say so. */
    bool pipelines = false;
};

/**
 * Asks for the capabilities; a server that refuses has none that are known. Raises what the exchange raises.
 */
Capabilities askCapabilities(Exchange& exchange);

} // namespace poplib
