#pragma once

#include "components/transport/connection.h"

#include <QString>

#include <optional>

namespace email {

/** How the last connection to each server was protected; nothing before the first one. */
struct Protections {
    std::optional<transport::Protection> POPServer;
    std::optional<transport::Protection> SMTPServer;
};

/** Shared by all windows for the whole run, and used on the user-interface thread only. */
inline Protections protections;

/** "encrypted, certificate valid (TLS 1.3)", "not encrypted" and so on. */
QString inWords(const std::optional<transport::Protection>& protection);

} // namespace email
