#pragma once

namespace protocol {

/** Which way a line of a dialogue goes. */
enum class Direction { ToServer, FromServer };

} // namespace protocol
