#include "tests/poplib/transcript_commands.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>

namespace support {

namespace {
using poplib::Command;
using poplib::CommandKind;

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
        return poplib::retrCommand(number, insteadOfTop ? before.back().bodyLineLimit : 0);
    }
    if (keyword == "TOP") {
        return poplib::topCommand(number, limit);
    }
    if (keyword == "LIST") {
        return poplib::listCommand(number);
    }
    if (keyword == "UIDL") {
        return poplib::uidlCommand();
    }
    if (keyword == "DELE") {
        return poplib::deleCommand(number);
    }
    if (keyword == "USER") {
        return poplib::userCommand(argument);
    }
    if (keyword == "PASS") {
        return poplib::passCommand(argument);
    }
    if (keyword == "STAT") {
        return poplib::statCommand();
    }
    if (keyword == "QUIT") {
        return poplib::quitCommand();
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
