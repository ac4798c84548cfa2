#pragma once

#include <QDeadlineTimer>

#include <cstdint>
#include <string_view>

namespace support {

/** A port of the loopback interface that nobody uses. \throws std::runtime_error when there is none. */
std::uint16_t freePort();

/** True when somebody takes connections at the port. */
bool takesConnections(std::uint16_t port);

/** True when the server at the port takes a connection and its greeting starts so, before the deadline. */
bool greets(std::uint16_t port, std::string_view greeting, const QDeadlineTimer& deadline);

} // namespace support
