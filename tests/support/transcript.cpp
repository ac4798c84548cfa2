#include "tests/support/transcript.h"

#include "tests/support/dialogue.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace support {

namespace {
using POPLib::Command;
using POPLib::CommandKind;

void addLine(Transcript& transcript, const DialogueLine& line) {
    using Speaker = Transcript::Speaker;
    const auto& [mark, rest] = line;
    if (mark == "S:") {
        transcript.turns.push_back({Speaker::Server, unescaped(rest) + "\r\n"});
    } else if (mark == "S-") {
        transcript.turns.push_back({Speaker::Server, unescaped(rest)});
    } else if (mark == "C:") {
        transcript.turns.push_back({Speaker::Client, unescaped(rest)});
    } else if (mark == "E:") {
        transcript.events.push_back(rest);
    } else if (mark == "X:") {
        transcript.error = std::stoi(rest);
    } else {
        throw std::invalid_argument("unknown mark in a dialogue: " + mark);
    }
}

const char* keywordOf(CommandKind kind) {
    switch (kind) {
    case CommandKind::User:
        return "USER";
    case CommandKind::Pass:
        return "PASS";
    case CommandKind::Auth:
        return "AUTH";
    case CommandKind::AuthResponse:
        return "response";
    case CommandKind::Stat:
        return "STAT";
    case CommandKind::List:
        return "LIST";
    case CommandKind::Uidl:
        return "UIDL";
    case CommandKind::Top:
        return "TOP";
    case CommandKind::Retr:
        return "RETR";
    case CommandKind::Dele:
        return "DELE";
    case CommandKind::Quit:
        return "QUIT";
    }
    throw std::invalid_argument("a command of no kind");
}

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

std::vector<std::string> Transcript::clientLines() const {
    std::vector<std::string> lines;
    for (const Turn& turn : turns) {
        if (turn.speaker == Speaker::Client) {
            lines.push_back(turn.text);
        }
    }
    return lines;
}

std::string Transcript::serverBytes() const {
    std::string bytes;
    for (const Turn& turn : turns) {
        if (turn.speaker == Speaker::Server) {
            bytes += turn.text;
        }
    }
    return bytes;
}

std::vector<std::string> Transcript::contentEvents() const {
    std::vector<std::string> content;
    std::copy_if(events.begin(), events.end(), std::back_inserter(content), [](const std::string& event) {
        return event.starts_with("header ") || event.starts_with("body ");
    });
    return content;
}

std::vector<std::string> pop3TranscriptNames() {
    return dialogueNames("pop3");
}

Transcript readPop3Transcript(const std::string& name) {
    Transcript transcript;
    for (const DialogueLine& line : readDialogue("pop3", name)) {
        addLine(transcript, line);
    }
    return transcript;
}

std::vector<Command> commandsOf(const Transcript& transcript) {
    std::vector<Command> commands;
    for (const std::string& line : transcript.clientLines()) {
        commands.push_back(commandOf(line, commands));
    }
    return commands;
}

Script scriptOf(const Transcript& transcript, std::size_t pieceOctets) {
    std::vector<Step> steps;
    std::string bytes;
    for (const Transcript::Turn& turn : transcript.turns) {
        if (turn.speaker == Transcript::Speaker::Server) {
            bytes += turn.text;
        } else {
            steps.emplace_back(Send{std::exchange(bytes, {}), pieceOctets});
            steps.emplace_back(ExpectLine{});
        }
    }
    steps.emplace_back(Send{bytes, pieceOctets});
    return Script(std::move(steps));
}

std::string describedHeader(const std::string& field, const std::string& value) {
    return "header [" + escaped(field) + "] [" + escaped(value) + ']';
}

std::string describedBody(std::int64_t bytesTransferred, const std::string& text) {
    return "body " + std::to_string(bytesTransferred) + " [" + escaped(text) + ']';
}

std::string described(const POPLib::Event& event) {
    struct Describer {
        std::string operator()(const POPLib::Greeted& greeted) const {
            return "greeted [" + escaped(greeted.text) + ']';
        }

        std::string operator()(const POPLib::Accepted& accepted) const {
            return std::string("accepted ") + keywordOf(accepted.kind) + " [" + escaped(accepted.text) + ']';
        }

        std::string operator()(const POPLib::Refused& refused) const {
            return std::string("refused ") + keywordOf(refused.kind) + " [" + escaped(refused.text) + ']';
        }

        std::string operator()(const POPLib::GoOn& goOn) const {
            return std::string("go on ") + keywordOf(goOn.kind) + " [" + escaped(goOn.text) + ']';
        }

        std::string operator()(const POPLib::HeaderLine& header) const {
            return describedHeader(header.field, header.value);
        }

        std::string operator()(const POPLib::BodyLine& body) const {
            return describedBody(body.bytesTransferred, body.text);
        }

        std::string operator()(const POPLib::ListingLine& line) const {
            return "listed [" + escaped(line.text) + ']';
        }

        std::string operator()(const POPLib::ResponseEnded& ended) const {
            return std::string("ended ") + keywordOf(ended.kind);
        }

        std::string operator()(const POPLib::Failed& failed) const {
            return failed.kind == POPLib::FailureKind::TooLarge ? "failed too large" : "failed out of step";
        }
    };

    return std::visit(Describer{}, event);
}

} // namespace support
