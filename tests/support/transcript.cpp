#include "tests/support/transcript.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace support {

namespace {
using POPLib::Command;
using POPLib::CommandKind;

std::filesystem::path folder() {
    return std::filesystem::path(BRINDLEWAKE_TEST_DATA) / "pop3";
}

/** \r, \n, \t, \\ and \xHH stand for the bytes that they name. */
std::string unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\') {
            bytes += text[index];
            continue;
        }
        switch (text.at(++index)) {
        case 'r':
            bytes += '\r';
            break;
        case 'n':
            bytes += '\n';
            break;
        case 't':
            bytes += '\t';
            break;
        case 'x':
            bytes += static_cast<char>(std::stoi(text.substr(index + 1, 2), nullptr, 16));
            index += 2;
            break;
        case '\\':
            bytes += '\\';
            break;
        default:
            throw std::invalid_argument("unknown escape in: " + text);
        }
    }
    return bytes;
}

std::string escaped(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '\\') {
            text += "\\\\";
        } else if (code < 0x20 || code > 0x7e) {
            text.append("\\x") += digits[code >> 4U];
            text += digits[code & 0xFU];
        } else {
            text += byte;
        }
    }
    return text;
}

void addLine(Transcript& transcript, const std::string& line) {
    using Speaker = Transcript::Speaker;
    const std::string mark = line.substr(0, 2);
    const std::string rest = line.size() > 3 ? line.substr(3) : std::string();
    if (line.empty() || line.front() == '#') {
        return;
    }
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
        throw std::invalid_argument("unknown line in a dialogue: " + line);
    }
}

const char* keywordOf(CommandKind kind) {
    switch (kind) {
    case CommandKind::User:
        return "USER";
    case CommandKind::Pass:
        return "PASS";
    case CommandKind::Stat:
        return "STAT";
    case CommandKind::List:
        return "LIST";
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
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

Transcript readPop3Transcript(const std::string& name) {
    std::ifstream file(folder() / (name + ".txt"));
    if (!file) {
        throw std::runtime_error("no such dialogue: " + name);
    }
    Transcript transcript;
    for (std::string line; std::getline(file, line);) {
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

        std::string operator()(const POPLib::HeaderLine& header) const {
            return describedHeader(header.field, header.value);
        }

        std::string operator()(const POPLib::BodyLine& body) const {
            return describedBody(body.bytesTransferred, body.text);
        }

        std::string operator()(const POPLib::ContentEnded& ended) const {
            return std::string("ended ") + keywordOf(ended.kind);
        }

        std::string operator()(const POPLib::Failed& failed) const {
            return failed.kind == POPLib::FailureKind::TooLarge ? "failed too large" : "failed out of step";
        }
    };

    return std::visit(Describer{}, event);
}

} // namespace support
