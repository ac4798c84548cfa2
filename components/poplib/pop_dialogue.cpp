// How the POP3 client speaks with the server: commands, replies and time-outs.

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

Event POP::nextSoon() {
    // A box that another handler opens may keep the wait from ending. What has come by then still counts.
    deadline_.setRemainingTime(timeouts_.soon);
    progress_ = session_.progress();
    Event event = next();
    renewDeadline();
    return event;
}

/** Sends what the session has to send; false when that is nothing. */
bool POP::sendQueued() {
    // The session must see bytes that came unasked first, or they would pass for the reply to this command.
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

/**
 * Returns the next event. \throws RuntimeError 20302 for a time-out, a lost connection and replies that are
 * not POP3, 7 when a response is too large or memory runs out.
 */
Event POP::awaitEvent() {
    const auto checked = [](Event event) {
        if (const auto* failed = std::get_if<Failed>(&event)) {
            throw RuntimeError(failed->kind == FailureKind::TooLarge ? errors::OutOfMemory
                                                                     : errors::MailServerTrouble);
        }
        return event;
    };
    // Most lines of a response have come together with earlier ones and need neither deadline nor socket.
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
        // A log-off without deletions ends on time, even while bytes keep coming.
        const bool tooLate = deadlineIsFixed_ && deadline_.hasExpired();
        if (tooLate || !connection_.isOpen() ||
            connection_.waitForBytes(deadline_) != transport::Outcome::Done) {
            throw RuntimeError(errors::MailServerTrouble);
        }
        receive();
    }
}

/**
 * Takes the bytes that have come. \throws RuntimeError 7 when memory runs out: the session has lost bytes
 * then and cannot go on.
 */
void POP::receive() {
    if (!platform::fitsInMemory([this] { session_.receive(connection_.takeBytes()); })) {
        throw RuntimeError(errors::OutOfMemory);
    }
}

/** From now on the server has this time for everything until the session is closed. */
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

/** Raises the event's status line, where it has one, without what a server may repeat of the password. */
void POP::raiseStatus(const Event& event) const {
    if (!PITrail) {
        return;
    }
    const auto raise = [this](const char* status, const std::string& text) {
        PITrail(Direction::FromServer, status + session_.secrets().hiddenIn(text));
    };
    if (const auto* const greeted = std::get_if<Greeted>(&event)) {
        raise("+OK ", greeted->text);
    } else if (const auto* const accepted = std::get_if<Accepted>(&event)) {
        raise("+OK ", accepted->text);
    } else if (const auto* const goOn = std::get_if<GoOn>(&event)) {
        raise("+ ", goOn->text);
    } else if (const auto* const refused = std::get_if<Refused>(&event)) {
        raise("-ERR ", refused->text);
    }
}

void POP::closeSession() {
    logOnRefused_ = false;
    deadlineIsFixed_ = false;
    pipelines_ = false;
    givesFirstLines_ = false;
    askedAhead_.clear();
    listed_.endSession();
    // The rest of a half-read response must not reach a later request.
    session_ = Pop3Session();
    connection_.close();
}

} // namespace poplib
