// How the POP3 client speaks with the server: commands, answers, and how long it waits for them.

#include "components/poplib/pop.h"
#include "platform/runtime_error.h"

#include <utility>

namespace poplib {

using platform::RuntimeError;
namespace errors = platform::errors;

Event POP::next() {
    Event event = awaitEvent();
    raiseStatus(event);
    return event;
}

/** Sends what the session has to send; false when that is nothing. */
bool POP::sendQueued() {
    // What has come unasked must be seen before a command goes out that it could pass for the answer to.
    if (session_.outstanding() == 0 && session_.state() != Pop3Session::State::Greeting &&
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
    if (session_.isInResponse()) {
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
        // A log-off ends on time, however much keeps coming.
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

/** Raises the event's status line, where it has one. */
void POP::raiseStatus(const Event& event) const {
    if (!PITrail) {
        return;
    }
    if (const auto* const greeted = std::get_if<Greeted>(&event)) {
        PITrail(Direction::FromServer, "+OK " + greeted->text);
    } else if (const auto* const accepted = std::get_if<Accepted>(&event)) {
        PITrail(Direction::FromServer, "+OK " + accepted->text);
    } else if (const auto* const goOn = std::get_if<GoOn>(&event)) {
        PITrail(Direction::FromServer, "+ " + goOn->text);
    } else if (const auto* const refused = std::get_if<Refused>(&event)) {
        PITrail(Direction::FromServer, "-ERR " + refused->text);
    }
}

void POP::closeSession() {
    logOnRefused_ = false;
    deadlineIsFixed_ = false;
    listed_.endSession();
    // Nothing of an answer that was not read to its end may reach a later request.
    session_ = Pop3Session();
    connection_.close();
}

} // namespace poplib
