#include "tests/poplib/transcript_commands.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>

namespace support {

namespace {
using POPLib::Command;
using POPLib::CommandKind;

Command commandOf(const std::string& line, const std::vector<Command>& before) {
    std::istringstream words(line);
    std::string keyword;
    std::int32_t number = 0;
    std::int32_t limit = 0;
    words >> keyword;
    const std::string argument = line.substr(std::min(line.size(), keyword.size() + 1));
    words >> number >> limit;
    if (keyword == "RETR") {
        const bool insteadOfTop = !before.empty() && before.back().kind == CommandKind::Top &&
                                  before.back().messageNumber == number;
        return POPLib::retrCommand(number, insteadOfTop ? before.back().bodyLineLimit : 0);
    }
    if (keyword == "TOP") {
        return POPLib::topCommand(number, limit);
    }
    if (keyword == "LIST") {
        return POPLib::listCommand(number);
    }
    if (keyword == "UIDL") {
        return POPLib::uidlCommand();
    }
    if (keyword == "DELE") {
        return POPLib::deleCommand(number);
    }
    if (keyword == "USER") {
        return POPLib::userCommand(argument);
    }
    if (keyword == "PASS") {
        return POPLib::passCommand(argument);
    }
    if (keyword == "STAT") {
        return POPLib::statCommand();
    }
    if (keyword == "QUIT") {
        return POPLib::quitCommand();
    }
    throw std::invalid_argument("unknown command in a dialogue: " + line);
}
} // namespace

std::vector<Command> commandsOf(const Transcript& transcript) {
    std::vector<Command> commands;
    for (const std::string& line : transcript.clientLines()) {
        commands.push_back(commandOf(line, commands));
    }
    return commands;
}

} // namespace support
