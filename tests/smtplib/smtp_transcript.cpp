#include "tests/smtplib/smtp_transcript.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace support {

namespace {
using SMTPLib::Stage;

std::filesystem::path folder() {
    return std::filesystem::path(BRINDLEWAKE_TEST_DATA) / "smtp";
}

/** \r, \n and \xHH stand for the bytes that they name. */
std::string unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\') {
            bytes += text[index];
        } else if (const char mark = text.at(++index); mark == 'r' || mark == 'n') {
            bytes += mark == 'r' ? '\r' : '\n';
        } else if (mark == 'x') {
            bytes += static_cast<char>(std::stoi(text.substr(index + 1, 2), nullptr, 16));
            index += 2;
        } else {
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
        if (code >= 0x20 && code <= 0x7e) {
            text += byte;
        } else {
            text.append("\\x") += digits[code >> 4U];
            text += digits[code & 0xFU];
        }
    }
    return text;
}

void addLine(SmtpTranscript& transcript, const std::string& line) {
    const std::string mark = line.substr(0, 2);
    const std::string rest = line.size() > 3 ? line.substr(3) : std::string();
    if (line.empty() || line.front() == '#') {
        return;
    }
    if (mark == "S:") {
        transcript.turns.push_back({true, unescaped(rest) + "\r\n"});
    } else if (mark == "S-") {
        transcript.turns.push_back({true, unescaped(rest)});
    } else if (mark == "C:") {
        transcript.turns.push_back({false, rest});
    } else if (mark == "E:") {
        transcript.events.push_back(rest);
    } else if (mark == "M:" && rest == "8bit") {
        transcript.eightBit = true;
    } else if (mark == "M:" && rest == "at once") {
        transcript.atOnce = true;
    } else if (mark == "X:") {
        transcript.error = std::stoi(rest);
    } else {
        throw std::invalid_argument("unknown line in a dialogue: " + line);
    }
}

const char* nameOf(Stage stage) {
    switch (stage) {
    case Stage::Greeting:
        return "greeting";
    case Stage::Hello:
        return "hello";
    case Stage::Sender:
        return "sender";
    case Stage::Recipient:
        return "recipient";
    case Stage::Data:
        return "data";
    case Stage::Message:
        return "message";
    }
    throw std::invalid_argument("no such stage");
}

struct Describer {
    std::string operator()(const SMTPLib::Replied& replied) const {
        std::string text = "replied " + std::to_string(replied.reply.code);
        for (const std::string& line : replied.reply.lines) {
            text += " [" + escaped(line) + ']';
        }
        return text;
    }

    std::string operator()(const SMTPLib::Opened&) const { return "opened"; }

    std::string operator()(const SMTPLib::ContentWanted&) const { return "content wanted"; }

    std::string operator()(const SMTPLib::Accepted&) const { return "accepted"; }

    std::string operator()(const SMTPLib::FarewellSaid&) const { return "farewell"; }

    std::string operator()(const SMTPLib::TooLarge&) const { return "too large"; }

    std::string operator()(const SMTPLib::Refused& refused) const {
        return std::string("refused ") + nameOf(refused.stage) + ' ' + std::to_string(refused.code);
    }

    std::string operator()(const SMTPLib::Failed& failed) const {
        const bool tooEarly = failed.kind == SMTPLib::FailureKind::ConfirmedTooEarly;
        return tooEarly ? "failed confirmed too early" : "failed out of step";
    }
};
} // namespace

std::vector<std::string> smtpTranscriptNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

SmtpTranscript readSmtpTranscript(const std::string& name) {
    std::ifstream file(folder() / (name + ".txt"));
    if (!file) {
        throw std::runtime_error("no such dialogue: " + name);
    }
    SmtpTranscript transcript;
    for (std::string line; std::getline(file, line);) {
        addLine(transcript, line);
    }
    return transcript;
}

void play(const SmtpTranscript& transcript, Peer& peer, std::size_t pieceOctets) {
    std::string bytes;
    bool inMessage = false;
    const auto say = [&] {
        if (!bytes.empty()) {
            peer.send(std::exchange(bytes, {}), transcript.atOnce ? 0 : pieceOctets);
        }
    };
    for (const SmtpTranscript::Turn& turn : transcript.turns) {
        if (turn.fromServer) {
            bytes += turn.text;
            continue;
        }
        say();
        if (!inMessage) {
            peer.readLine();
        } else if (turn.text == ".") {
            while (peer.readLine() != ".") {
            }
        }
        inMessage = (inMessage || turn.text == "DATA") && turn.text != ".";
    }
    say();
}

std::string described(const SMTPLib::Event& event) {
    return std::visit(Describer{}, event);
}

} // namespace support
