#include "components/smtplib/smtp_session.h"

#include <utility>

namespace smtplib {

namespace {
constexpr int kSuccess = 2;
constexpr int kIntermediate = 3;

bool isPartOfAuth(CommandKind kind) noexcept {
    return kind == CommandKind::Auth || kind == CommandKind::AuthResponse;
}

/** Whether a reply that begins with this digit lets the command go through. */
bool isSuccess(CommandKind kind, int firstDigit) noexcept {
    // A log-on takes any number of challenges before it is accepted.
    const bool intermediate = kind == CommandKind::Data || isPartOfAuth(kind);
    return (firstDigit == kIntermediate && intermediate) ||
           (firstDigit == kSuccess && kind != CommandKind::Data);
}

struct ReplyOf {
    const Reply* operator()(const Failed& failed) const noexcept {
        return failed.reply ? &*failed.reply : nullptr;
    }

    template <class Replied>
    const Reply* operator()(const Replied& replied) const noexcept {
        return &replied.reply;
    }
};
} // namespace

const Reply* replyOf(const Event& event) noexcept {
    return std::visit(ReplyOf{}, event);
}

std::string SmtpSession::takeOutput() {
    // What the server says unasked must not be taken for the reply to a command that is sent meanwhile.
    if (state_ == State::Greeting || state_ == State::Over || (commands_.hasWaiting() && hasUnusedBytes())) {
        commands_.holdOutput();
        return {};
    }
    std::string output = std::exchange(text_, {});
    const bool hadWaiting = commands_.hasWaiting();
    output += commands_.takeOutput();
    if (hadWaiting && state_ == State::Text) {
        // The command that was waiting is the final dot, as nothing else ends the text.
        state_ = State::Commands;
        mayHaveBeenSent_ = true;
    }
    return output;
}

void SmtpSession::receive(std::string_view bytes) {
    if (state_ != State::Over) {
        reader_.receive(bytes);
    }
}

std::optional<CommandKind> SmtpSession::awaited() const {
    if (state_ == State::Greeting) {
        return CommandKind::Greeting;
    }
    if (commands_.outstanding() > 0) {
        return commands_.first().kind;
    }
    return commands_.hasWaiting() ? std::optional(commands_.firstWaiting().kind) : std::nullopt;
}

bool SmtpSession::canQuit() const noexcept {
    return state_ == State::Commands && commands_.outstanding() == 0 && !commands_.hasWaiting() &&
           !hasUnusedBytes();
}

std::optional<SmtpSession::Event> SmtpSession::nextEvent() {
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
    if (state_ == State::Greeting) {
        return greeting(*std::move(reply));
    }
    return commands_.outstanding() > 0 ? answer(*std::move(reply)) : unasked(*std::move(reply));
}

Event SmtpSession::greeting(Reply reply) {
    if (reply.kind() == kIntermediate) {
        return fail(FailureKind::OutOfStep, std::move(reply));
    }
    state_ = State::Commands;
    if (reply.kind() == kSuccess) {
        return Greeted{std::move(reply)};
    }
    return refuse(CommandKind::Greeting, std::move(reply));
}

Event SmtpSession::answer(Reply reply) {
    const CommandKind kind = commands_.takeFirst().kind;
    if (kind == CommandKind::Quit) {
        state_ = State::Over;
        return Accepted{kind, std::move(reply)};
    }
    if (reply.kind() != kSuccess && reply.kind() != kIntermediate) {
        return refuse(kind, std::move(reply));
    }
    if (!isSuccess(kind, reply.kind())) {
        return fail(FailureKind::OutOfStep, std::move(reply));
    }
    if (kind == CommandKind::Data) {
        state_ = State::Text;
        stuffer_ = {};
        return GoOn{kind, std::move(reply)};
    }
    if (reply.kind() == kIntermediate) {
        return GoOn{kind, std::move(reply)};
    }
    if (kind == CommandKind::EndOfMessage) {
        mayHaveBeenSent_ = false;
    }
    return Accepted{kind, std::move(reply)};
}

/**
 * A reply to no outstanding command. RFC 5321 section 3.3 has the server wait for the final dot, but some
 * refuse while the text is being sent.
 */
Event SmtpSession::unasked(Reply reply) {
    const bool duringText = state_ == State::Text;
    if (duringText && reply.kind() == kSuccess) {
        return fail(FailureKind::ConfirmedTooEarly, std::move(reply));
    }
    if (reply.endsService() || (duringText && reply.kind() != kIntermediate)) {
        // The server would still read a command as text, so none can follow.
        state_ = State::Over;
        return refuse(duringText ? CommandKind::EndOfMessage : awaited().value_or(CommandKind::Mail),
                      std::move(reply));
    }
    return fail(FailureKind::OutOfStep, std::move(reply));
}

Event SmtpSession::refuse(CommandKind kind, Reply reply) {
    if (reply.endsService()) {
        state_ = State::Over;
    }
    mayHaveBeenSent_ = false;
    return Refused{kind, std::move(reply)};
}

Event SmtpSession::fail(FailureKind kind, std::optional<Reply> reply) {
    state_ = State::Over;
    return Failed{kind, std::move(reply)};
}

} // namespace smtplib
