#pragma once

#include "tests/support/peer.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace support {

/** Sends the bytes, in pieces of so many bytes; 0 means at once. */
struct Send {
    std::string bytes;
    std::size_t pieceBytes = 0;
};

/** Waits for one line from the client; refuses CAPA on the way, as a server of old does. */
struct ExpectLine {};

struct Close {};

struct Reset {};

/** Says nothing until release() or until the client has gone. */
struct HoldSilent {};

/** Sends one byte at a time with a pause behind each. */
struct Trickle {
    std::string bytes;
    std::chrono::milliseconds pause{1};
};

/** Sends what the callable gives, until it gives nothing: for answers that nobody wants to hold in memory. */
struct Stream {
    std::function<std::string()> next;
};

/** Speaks TLS from here on, as the server. */
struct BeginTls {
    TlsIdentity identity;
};

using Step = std::variant<Send, ExpectLine, Close, Reset, HoldSilent, Trickle, Stream, BeginTls>;

/** The steps of one connection, in order. After the last one the connection is closed. */
class Script {
  public:
    Script(std::initializer_list<Step> steps) : steps_(steps) {}

    explicit Script(std::vector<Step> steps) : steps_(std::move(steps)) {}

    void operator()(Peer& peer) const;

  private:
    std::vector<Step> steps_;
};

} // namespace support
