// How the POP3 client speaks with the server: commands, answers, and how long it waits for them.

#include "components/poplib/pop.h"
#include "components/poplib/reply_text.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <utility>

namespace POPLib {

using platform::RuntimeError;
namespace errors = platform::errors;

/** Sends a command and returns the text of its +OK answer, nothing for -ERR. */
std::optional<std::string> POP::ask(Command command) {
    session_.submit(std::move(command));
    const Event event = awaitEvent();
    raise(event);
    if (const auto* accepted = std::get_if<Accepted>(&event)) {
        return accepted->text;
    }
    return std::nullopt;
}

void POP::mustAccept(Command command) {
    session_.submit(std::move(command));
    const Event event = awaitEvent();
    raise(event);
    if (const auto* refused = std::get_if<Refused>(&event)) {
        refusedLogOn(refused->text);
    }
}

void POP::refusedLogOn(std::string_view text) {
    logOnRefused_ = true;
    throw RuntimeError(mayBeTriedLater(text) ? errors::MailServerBusy : errors::LogOnRefused);
}

/** Hands the events of an answer's content over; false when the server refused the command. */
bool POP::readContent(Command command, const std::function<void(const Event&)>& take) {
    if (!ask(std::move(command))) {
        return false;
    }
    for (;;) {
        const Event event = awaitEvent();
        if (std::holds_alternative<ContentEnded>(event)) {
            return true;
        }
        take(event);
    }
}

/** Sends what the session has to send; false when that is nothing. */
bool POP::sendQueued() {
    // What has come unasked must be seen before a command goes out that it could pass for the answer to.
    if (session_.underWay() == 0 && session_.state() != Pop3Session::State::Greeting &&
        connection_.hasBytes()) {
        session_.receive(connection_.takeBytes());
    }
    const std::string output = session_.takeOutput();
    if (output.empty()) {
        return false;
    }
    connection_.send(output);
    ++roundTrips_;
    if (PITrail) {
        for (const std::string& shown : session_.shownOutput()) {
            PITrail(Direction::ToServer, shown);
        }
    }
    return true;
}

/** The next event. \throws RuntimeError for an answer that is none, or does not come in time. */
Event POP::awaitEvent() {
    const auto checked = [](Event event) {
        if (const auto* failed = std::get_if<Failed>(&event)) {
            throw RuntimeError(failed->kind == FailureKind::TooLarge ? errors::OutOfMemory
                                                                     : errors::MailServerTrouble);
        }
        return event;
    };
    // Most lines of an answer have come with the ones before: they need neither a deadline nor the socket.
    if (session_.isInContent()) {
        if (auto event = session_.nextEvent()) {
            return checked(*std::move(event));
        }
    }
    if (connection_.isOpen() && sendQueued()) {
        renewDeadline();
    }
    for (;;) {
        // What has come is used up first, also from a server that has hung up since.
        if (auto event = session_.nextEvent()) {
            return checked(*std::move(event));
        }
        if (session_.progress() != progress_) {
            renewDeadline();
        }
        // A farewell ends on time, however much keeps coming.
        const bool tooLate = deadlineIsFixed_ && deadline_.hasExpired();
        if (tooLate || !connection_.isOpen() ||
            connection_.waitForBytes(deadline_) != transport::Outcome::Done) {
            throw RuntimeError(errors::MailServerTrouble);
        }
        receive();
    }
}

/** Takes what has come. Without memory for it the session is out of step, so nobody may go on with it. */
void POP::receive() {
    if (!platform::fitsInMemory([this] { session_.receive(connection_.takeBytes()); })) {
        throw RuntimeError(errors::OutOfMemory);
    }
}

/** From here on, all that the server does must be done within this time. */
void POP::waitNoLongerThan(std::chrono::milliseconds time) {
    deadline_.setRemainingTime(time);
    deadlineIsFixed_ = true;
}

void POP::renewDeadline() {
    progress_ = session_.progress();
    if (!deadlineIsFixed_) {
        deadline_.setRemainingTime(timeouts_.answer);
    }
}

void POP::raise(const Event& event) {
    const auto trail = [this](const char* status, const std::string& text) {
        if (PITrail) {
            PITrail(Direction::FromServer, status + text);
        }
    };
    if (const auto* header = std::get_if<HeaderLine>(&event)) {
        if (Header) {
            Header(header->field, header->value);
        }
    } else if (const auto* body = std::get_if<BodyLine>(&event)) {
        if (Transfer) {
            Transfer(platform::checkedTo<std::int32_t>(body->bytesTransferred), body->text);
        }
    } else if (const auto* greeted = std::get_if<Greeted>(&event)) {
        trail("+OK ", greeted->text);
    } else if (const auto* accepted = std::get_if<Accepted>(&event)) {
        trail("+OK ", accepted->text);
    } else if (const auto* refused = std::get_if<Refused>(&event)) {
        trail("-ERR ", refused->text);
    }
}

void POP::closeSession() {
    logOnRefused_ = false;
    deadlineIsFixed_ = false;
    listed_.clear();
    deleted_.clear();
    numberAndSize_ = {};
    // Nothing of an answer that was not read to its end may reach a later request.
    session_ = Pop3Session();
    connection_.close();
}

} // namespace POPLib
