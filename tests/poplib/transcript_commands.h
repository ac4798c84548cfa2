#pragma once

#include "components/poplib/commands.h"
#include "tests/support/transcript.h"

#include <vector>

namespace support {

/** The client's lines as commands; a RETR after a TOP for the same message has the limit of that TOP. */
std::vector<poplib::Command> commandsOf(const Transcript& transcript);

} // namespace support
