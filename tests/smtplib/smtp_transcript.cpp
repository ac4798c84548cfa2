#include "tests/smtplib/smtp_transcript.h"

#include "tests/support/dialogue.h"

#include <stdexcept>
#include <utility>

namespace support {

namespace {
using SMTPLib::CommandKind;

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

const char* nameOf(CommandKind kind) {
    switch (kind) {
    case CommandKind::Greeting:
        return "greeting";
    case CommandKind::Ehlo:
        return "EHLO";
    case CommandKind::Helo:
        return "HELO";
    case CommandKind::Mail:
        return "MAIL";
    case CommandKind::Rcpt:
        return "RCPT";
    case CommandKind::Data:
        return "DATA";
    case CommandKind::EndOfMessage:
        return "dot";
    case CommandKind::Quit:
        return "QUIT";
    }
    throw std::invalid_argument("a command of no kind");
}

std::string described(const SMTPLib::Reply& reply) {
    std::string text = ' ' + std::to_string(reply.code);
    for (const std::string& line : reply.lines) {
        text += " [" + escaped(line) + ']';
    }
    return text;
}

struct Describer {
    std::string operator()(const SMTPLib::Greeted& greeted) const {
        return "greeted" + described(greeted.reply);
    }

    std::string operator()(const SMTPLib::Accepted& accepted) const {
        return std::string("accepted ") + nameOf(accepted.kind) + described(accepted.reply);
    }

    std::string operator()(const SMTPLib::GoOn& goOn) const {
        return std::string("go on ") + nameOf(goOn.kind) + described(goOn.reply);
    }

    std::string operator()(const SMTPLib::Refused& refused) const {
        return std::string("refused ") + nameOf(refused.kind) + described(refused.reply);
    }

    std::string operator()(const SMTPLib::Failed& failed) const {
        const bool tooEarly = failed.kind == SMTPLib::FailureKind::ConfirmedTooEarly;
        const std::string text = tooEarly ? "failed confirmed too early" : "failed out of step";
        return failed.reply ? text + described(*failed.reply) : text;
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
    for (const Turn& turn : transcript.turns) {
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
