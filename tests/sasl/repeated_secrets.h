#pragma once

// What tests of both clients need to see that a password stays hidden.

#include "tests/support/scripted_server.h"

#include <string>
#include <vector>

namespace support {

/** The password, and how it looks in base64 wherever in a text it stands. */
std::vector<std::string> formsOf(const std::string& password);

/** The lines in which the password stands in any of its forms. */
std::vector<std::string> linesThatTell(const std::vector<std::string>& lines, const std::string& password);

/**
 * Plays the server's side of a log-on that has begun with this AUTH command, for any mechanism and up to the
 * last word, which is left to the caller. Challenges stand behind `mark`. The right answers to SCRAM are for
 * the password. Returns what the client has sent, the lines with blanks between.
 */
std::string playMechanism(Peer& peer, const std::string& command, const std::string& mark,
                          const std::string& password);

} // namespace support
