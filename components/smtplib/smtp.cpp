#include "components/smtplib/smtp.h"

#include "components/smtplib/error_numbers.h"
#include "platform/background.h"
#include "platform/drives.h"
#include "platform/runtime_error.h"
#include "platform/while_true.h"

#include <optional>
#include <utility>

namespace smtplib {

using platform::RuntimeError;
using transport::Outcome;
namespace errors = platform::errors;

void SMTP::setBlocking(bool blocking) {
    if (!blocking) {
        throw RuntimeError(errors::InvalidProcedureCall);
    }
}

template <class Action>
void SMTP::asRequest(const Action& action) {
    // After an error the dialogue may have stopped anywhere, so the session cannot go on.
    requests_.run(action, [this] { closeSession(); });
}

void SMTP::issueRequest(Request request) {
    switch (request) {
    case Request::OpenConnection:
        if (connection_.isOpen()) {
            throw RuntimeError(errors::MailServerBusy);
        }
        asRequest([this] { open(); });
        break;
    case Request::TransmitMessage:
        asRequest([this] { transmit(); });
        break;
    case Request::CloseConnection:
        // A request that runs further down the stack still needs the session.
        if (!requests_.isRunning() && connection_.isOpen()) {
            asRequest([this] { close(); });
        }
        break;
    }
}

void SMTP::open() {
    const auto server = transport::parseServerName(host_, kDefaultPorts);
    if (!server) {
        throw RuntimeError(errors::HostNotFound);
    }
    // A listener, or a timer inside a wait, may set another account meanwhile.
    const Account account = account_;
    SessionTerms terms{server->security};
    for (bool isFirst = true;; isFirst = false) {
        connect(*server);
        terms.toThisComputer = connection_.isToThisComputer();
        auto outcome = openSession(*this, addressLiteral(connection_.localAddress()), account, terms);
        if (auto* const opened = std::get_if<OpenedSession>(&outcome)) {
            opened_ = std::move(*opened);
            break;
        }
        if (!isFirst) {
            throw RuntimeError(errors::SendingOutOfStep);
        }
        terms.security = transport::Security::Never;
        connection_.abort();
    }
    if (Protected) {
        Protected(connection_.protection());
    }
}

void SMTP::connect(const transport::ServerName& server) {
    const Outcome outcome = connection_.open(server, QDeadlineTimer(timeouts_.connection));
    if (outcome != Outcome::Done) {
        throw RuntimeError(smtplib::numberOf(outcome));
    }
    session_ = {};
    opened_ = {};
}

void SMTP::encrypt() {
    if (session_.hasUnusedBytes()) {
        throw RuntimeError(errors::EncryptionFailed);
    }
    const Outcome outcome = connection_.encrypt(QDeadlineTimer(timeouts_.connection));
    if (outcome != Outcome::Done) {
        throw RuntimeError(smtplib::numberOf(outcome));
    }
}

namespace {
std::optional<platform::RegularInput> dataFileOf(const Message& message, platform::HeldFile held) {
    if (held) {
        return platform::RegularInput(std::move(held));
    }
    if (message.dataFile.isEmpty()) {
        return std::nullopt;
    }
    return platform::RegularInput(platform::nativePath(message.dataFile));
}
} // namespace

void SMTP::transmit() {
    platform::HeldFile heldDataFile = std::exchange(message_.heldDataFile, nullptr);
    if (!connection_.isOpen()) {
        throw RuntimeError(numberOfLoss(opened_.logOn));
    }
    const QDateTime now = QDateTime::currentDateTime();
    if (message_.messageId.empty()) {
        message_.messageId = newMessageId(message_.sender, now);
    }
    // A listener, or a timer inside a wait, may set properties meanwhile; this message keeps what it has.
    const Message message = message_;
    PreparedMessage prepared = form_ ? form_(message, opened_.extensions, now) : prepareMessage(message, now);
    const std::string& body = prepared.body ? *prepared.body : message.body;
    MessageSource source(prepared.header, body, dataFileOf(message, std::move(heldDataFile)));
    if (message.dataFileEncoded) {
        source.fileIsEncoded();
    }
    const MessageTotals totals = measured(source);
    offerMessage(*this,
                 {std::move(prepared.sender), std::move(prepared.mailboxes), totals.bytes, totals.eightBit,
                  prepared.smtpUtf8},
                 opened_);
    sendText(source, totals.bytes);
    awaitConfirmation(*this);
    message_.messageId.clear();
}

MessageTotals SMTP::measured(MessageSource& source) const {
    MessageTotals totals;
    if (source.readsFileToMeasure()) {
        platform::runInBackground([&] { totals = source.measure(); });
    } else {
        totals = source.measure();
    }
    return totals;
}

/**
 * Sends the text and the final dot; stops without the dot when the server sends a reply before the end of the
 * text.
 */
void SMTP::sendText(MessageSource& source, std::int64_t totalBytes) {
    std::int64_t doneBytes = 0;
    const auto progress = [&] {
        if (Progress) {
            Progress(doneBytes, totalBytes);
        }
    };
    progress();
    for (std::string piece; source.next(piece);) {
        if (session_.hasUnusedBytes() || connection_.hasBytes()) {
            return;
        }
        session_.addText(piece);
        connection_.enqueue(session_.takeOutput());
        const Outcome outcome = connection_.waitUntilSentOrAnswered(QDeadlineTimer(timeouts_.dataBlock));
        if (outcome != Outcome::Done) {
            throw RuntimeError(smtplib::numberOf(outcome));
        }
        doneBytes += static_cast<std::int64_t>(piece.size());
        progress();
    }
    if (!session_.hasUnusedBytes() && !connection_.hasBytes()) {
        session_.submit(endOfMessageCommand());
    }
}

void SMTP::close() {
    if (session_.canQuit()) {
        // The reply does not matter: a message that the server has confirmed is sent.
        session_.submit(quitCommand());
        awaitEvent();
    }
    closeSession();
}

Event SMTP::next() {
    Event event = awaitEvent();
    if (const auto* const failed = std::get_if<Failed>(&event)) {
        // A final dot that never left this computer has not made a message complete.
        const bool dotLeft = session_.mayHaveBeenSent() && connection_.unsentBytes() == 0;
        throw RuntimeError(numberOf(failed->kind, dotLeft));
    }
    return event;
}

Event SMTP::nextSoon() {
    const platform::WhileTrue inHaste(inHaste_);
    return next();
}

/** Sends what is to be sent and waits for the next event, which may be a failure. */
Event SMTP::awaitEvent() {
    QDeadlineTimer deadline(timeout());
    for (;;) {
        // What has come is used up first, also from a server that has hung up since.
        if (auto event = session_.nextEvent()) {
            raise(*event);
            return *std::move(event);
        }
        if (sendOutput()) {
            deadline = QDeadlineTimer(timeout());
        }
        const Outcome outcome = connection_.isOpen() ? connection_.waitForBytes(deadline) : Outcome::Lost;
        if (outcome != Outcome::Done) {
            return Failed{outcome == Outcome::TimedOut ? FailureKind::TimedOut : FailureKind::Lost, {}};
        }
        session_.receive(connection_.takeBytes());
    }
}

bool SMTP::sendOutput() {
    const std::string output = session_.takeOutput();
    if (output.empty() || !connection_.isOpen()) {
        return false;
    }
    connection_.send(output);
    if (PITrail) {
        for (const std::string& shown : session_.shownOutput()) {
            PITrail(Direction::ToServer, shown);
        }
    }
    return true;
}

void SMTP::raise(const Event& event) const {
    const Reply* const reply = replyOf(event);
    if (!PITrail || reply == nullptr) {
        return;
    }
    for (const std::string& line : reply->lines) {
        const char mark = &line == &reply->lines.back() ? ' ' : '-';
        PITrail(Direction::FromServer,
                std::to_string(reply->code) + mark + session_.secrets().hiddenIn(line));
    }
}

/** How long the server may take for what it is to do next. */
std::chrono::milliseconds SMTP::timeout() const {
    if (inHaste_) {
        return timeouts_.quit;
    }
    switch (session_.awaited().value_or(CommandKind::Quit)) {
    case CommandKind::Greeting:
        return timeouts_.greeting;
    case CommandKind::Ehlo:
    case CommandKind::Helo:
    case CommandKind::StartTls:
    case CommandKind::Auth:
    case CommandKind::AuthResponse:
        return timeouts_.hello;
    case CommandKind::Mail:
        return timeouts_.sender;
    case CommandKind::Rcpt:
        return timeouts_.recipient;
    case CommandKind::Data:
        return timeouts_.data;
    case CommandKind::EndOfMessage:
        return timeouts_.confirmation;
    case CommandKind::Quit:
        break;
    }
    return session_.state() == SmtpSession::State::Text ? timeouts_.dataBlock : timeouts_.quit;
}

/**
 * Closes the connection. Where the server can take a command, sends QUIT first and does not wait for the
 * reply.
 */
void SMTP::closeSession() {
    opened_ = {};
    if (connection_.isOpen() && session_.canQuit()) {
        session_.submit(quitCommand());
        connection_.send(session_.takeOutput());
        connection_.close();
        return;
    }
    // A part of a message may still be unsent. It must not leave after the failure has been reported.
    connection_.abort();
}

} // namespace smtplib
