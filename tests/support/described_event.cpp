#include "tests/support/described_event.h"

#include <stdexcept>
#include <variant>

namespace support {

namespace {
const char* keywordOf(poplib::CommandKind kind) {
    using poplib::CommandKind;
    switch (kind) {
    case CommandKind::Capa:
        return "CAPA";
    case CommandKind::Stls:
        return "STLS";
    case CommandKind::Utf8:
        return "UTF8";
    case CommandKind::Apop:
        return "APOP";
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
    case CommandKind::ListAll:
        return "LIST (all)";
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

const char* nameOf(smtplib::CommandKind kind) {
    using smtplib::CommandKind;
    switch (kind) {
    case CommandKind::Greeting:
        return "greeting";
    case CommandKind::Ehlo:
        return "EHLO";
    case CommandKind::Helo:
        return "HELO";
    case CommandKind::StartTls:
        return "STARTTLS";
    case CommandKind::Auth:
        return "AUTH";
    case CommandKind::AuthResponse:
        return "response";
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

std::string replyInWords(const smtplib::Reply& reply) {
    std::string text = ' ' + std::to_string(reply.code);
    for (const std::string& line : reply.lines) {
        text += " [" + escaped(line) + ']';
    }
    return text;
}

struct Pop3Describer {
    std::string operator()(const poplib::Greeted& greeted) const {
        return "greeted [" + escaped(greeted.text) + ']';
    }

    std::string operator()(const poplib::Accepted& accepted) const {
        return std::string("accepted ") + keywordOf(accepted.kind) + " [" + escaped(accepted.text) + ']';
    }

    std::string operator()(const poplib::Refused& refused) const {
        return std::string("refused ") + keywordOf(refused.kind) + " [" + escaped(refused.text) + ']';
    }

    std::string operator()(const poplib::GoOn& goOn) const {
        return std::string("go on ") + keywordOf(goOn.kind) + " [" + escaped(goOn.text) + ']';
    }

    std::string operator()(const poplib::HeaderLine& header) const {
        return describedHeader(header.field, header.value);
    }

    std::string operator()(const poplib::BodyLine& body) const {
        return describedBody(body.bytesTransferred, body.text);
    }

    std::string operator()(const poplib::ListingLine& line) const {
        return "listed [" + escaped(line.text) + ']';
    }

    std::string operator()(const poplib::ResponseEnded& ended) const {
        return std::string("ended ") + keywordOf(ended.kind);
    }

    std::string operator()(const poplib::Failed& failed) const {
        return failed.kind == poplib::FailureKind::TooLarge ? "failed too large" : "failed out of step";
    }
};

struct SmtpDescriber {
    std::string operator()(const smtplib::Greeted& greeted) const {
        return "greeted" + replyInWords(greeted.reply);
    }

    std::string operator()(const smtplib::Accepted& accepted) const {
        return std::string("accepted ") + nameOf(accepted.kind) + replyInWords(accepted.reply);
    }

    std::string operator()(const smtplib::GoOn& goOn) const {
        return std::string("go on ") + nameOf(goOn.kind) + replyInWords(goOn.reply);
    }

    std::string operator()(const smtplib::Refused& refused) const {
        return std::string("refused ") + nameOf(refused.kind) + replyInWords(refused.reply);
    }

    std::string operator()(const smtplib::Failed& failed) const {
        const bool tooEarly = failed.kind == smtplib::FailureKind::ConfirmedTooEarly;
        const std::string text = tooEarly ? "failed confirmed too early" : "failed out of step";
        return failed.reply ? text + replyInWords(*failed.reply) : text;
    }
};
} // namespace

std::string described(const poplib::Event& event) {
    return std::visit(Pop3Describer{}, event);
}

std::string described(const smtplib::Event& event) {
    return std::visit(SmtpDescriber{}, event);
}

std::string describedHeader(const std::string& field, const std::string& value) {
    return "header [" + escaped(field) + "] [" + escaped(value) + ']';
}

std::string describedBody(std::int64_t bytesTransferred, const std::string& text) {
    return "body " + std::to_string(bytesTransferred) + " [" + escaped(text) + ']';
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

} // namespace support
