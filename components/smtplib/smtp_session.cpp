#include "components/smtplib/smtp_session.h"

namespace SMTPLib {

namespace {
constexpr int kSuccess = 2;
constexpr int kIntermediate = 3;
constexpr int kRefusedForGood = 5;
/** The server ends the session, whatever was asked (RFC 5321 section 3.8). */
constexpr int kServiceEnds = 421;
} // namespace

void SmtpSession::begin(Envelope envelope) {
    if (extensions_.sizeLimit > 0 && envelope.messageOctets > extensions_.sizeLimit) {
        state_ = State::Refused;
        following_ = TooLarge{};
        return;
    }
    envelope_ = std::move(envelope);
    nextRecipient_ = 0;
    stuffer_ = {};
    state_ = State::Sender;
    submit(mailCommand(envelope_, extensions_.size, extensions_.eightBit));
}

void SmtpSession::addContent(std::string_view text) {
    stuffer_.add(text, output_);
}

void SmtpSession::endContent() {
    state_ = State::Confirmation;
    submit(".");
}

bool SmtpSession::canQuit() const noexcept {
    return (state_ == State::Idle || state_ == State::Refused) && !hasUnusedBytes();
}

void SmtpSession::quit() {
    state_ = State::Farewell;
    submit("QUIT");
}

void SmtpSession::submit(std::string command) {
    output_ += command + "\r\n";
    waitingToBeShown_.push_back(std::move(command));
    commandWaits_ = true;
}

std::string SmtpSession::takeOutput() {
    shownOutput_.clear();
    // What the server says unasked must not be taken for the answer to a command that is sent meanwhile.
    if (state_ == State::Over || (commandWaits_ && hasUnusedBytes())) {
        return {};
    }
    if (commandWaits_) {
        commandWaits_ = false;
        answerDue_ = true;
        mayHaveBeenSent_ = state_ == State::Confirmation;
        shownOutput_.swap(waitingToBeShown_);
    }
    return std::exchange(output_, {});
}

void SmtpSession::receive(std::string_view bytes) {
    if (state_ != State::Over) {
        reader_.receive(bytes);
    }
}

std::optional<Event> SmtpSession::nextEvent() {
    if (following_) {
        return std::exchange(following_, std::nullopt);
    }
    if (state_ == State::Over) {
        return std::nullopt;
    }
    std::optional<Reply> reply = reader_.next();
    if (reader_.isBroken()) {
        return fail(FailureKind::OutOfStep);
    }
    if (!reply) {
        return std::nullopt;
    }
    following_ = answerDue_ ? eventOf(*reply) : eventOfUnasked(*reply);
    return Replied{*std::move(reply)};
}

std::optional<Event> SmtpSession::eventOf(const Reply& reply) {
    answerDue_ = false;
    if (state_ == State::Farewell) {
        state_ = State::Over;
        return FarewellSaid{};
    }
    if (reply.code == kServiceEnds) {
        return refuse(reply.code);
    }
    if (reply.kind() == (state_ == State::Data ? kIntermediate : kSuccess)) {
        return accept(reply);
    }
    if (reply.kind() == kSuccess || reply.kind() == kIntermediate) {
        return fail(FailureKind::OutOfStep);
    }
    if (state_ == State::Hello && !saidHelo_ && reply.kind() == kRefusedForGood) {
        saidHelo_ = true;
        submit(heloCommand(literal_));
        return std::nullopt;
    }
    return refuse(reply.code);
}

/** While text goes out, a server may refuse all the same (RFC 5321 section 3.3 asks it to wait). */
std::optional<Event> SmtpSession::eventOfUnasked(const Reply& reply) {
    const bool duringContent = state_ == State::Content || state_ == State::Confirmation;
    if (duringContent && reply.kind() == kSuccess) {
        return fail(FailureKind::ConfirmedTooEarly);
    }
    if (reply.code == kServiceEnds || (duringContent && reply.kind() != kIntermediate)) {
        const Event refused = refuse(reply.code);
        // The server still takes what it is sent for text: no command can follow.
        state_ = State::Over;
        return refused;
    }
    return fail(FailureKind::OutOfStep);
}

std::optional<Event> SmtpSession::accept(const Reply& reply) {
    switch (state_) {
    case State::Greeting:
        state_ = State::Hello;
        submit(ehloCommand(literal_));
        return std::nullopt;
    case State::Hello:
        state_ = State::Idle;
        extensions_ = saidHelo_ ? Extensions{} : extensionsOf(reply);
        return Opened{};
    case State::Sender:
    case State::Recipients:
        submitRecipient();
        return std::nullopt;
    case State::Data:
        state_ = State::Content;
        return ContentWanted{};
    case State::Confirmation:
        state_ = State::Idle;
        mayHaveBeenSent_ = false;
        return Accepted{};
    default:
        return fail(FailureKind::OutOfStep);
    }
}

void SmtpSession::submitRecipient() {
    if (nextRecipient_ < envelope_.recipients.size()) {
        state_ = State::Recipients;
        submit(rcptCommand(envelope_.recipients[nextRecipient_++]));
        return;
    }
    state_ = State::Data;
    submit("DATA");
}

Event SmtpSession::refuse(int code) {
    const Refused refused{stage(), code};
    state_ = code == kServiceEnds ? State::Over : State::Refused;
    mayHaveBeenSent_ = false;
    return refused;
}

Event SmtpSession::fail(FailureKind kind) {
    state_ = State::Over;
    return Failed{kind};
}

Stage SmtpSession::stage() const noexcept {
    switch (state_) {
    case State::Greeting:
        return Stage::Greeting;
    case State::Hello:
        return Stage::Hello;
    case State::Recipients:
        return Stage::Recipient;
    case State::Data:
        return Stage::Data;
    case State::Content:
    case State::Confirmation:
        return Stage::Message;
    default:
        return Stage::Sender;
    }
}

} // namespace SMTPLib
