#include "tests/smtplib/smtp_transcript.h"

#include "tests/support/dialogue.h"

#include <stdexcept>
#include <utility>

namespace support {

namespace {
using SMTPLib::Stage;

void addLine(SmtpTranscript& transcript, const DialogueLine& line) {
    const auto& [mark, rest] = line;
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
        throw std::invalid_argument("unknown mark in a dialogue: " + mark);
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
    return dialogueNames("smtp");
}

SmtpTranscript readSmtpTranscript(const std::string& name) {
    SmtpTranscript transcript;
    for (const DialogueLine& line : readDialogue("smtp", name)) {
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
