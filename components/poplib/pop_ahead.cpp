// What the POP3 client asks ahead, and what becomes of the answers.

#include "components/poplib/pop.h"
#include "platform/runtime_error.h"

#include <set>
#include <utility>

namespace poplib {

Event POP::ask(Command command) {
    // What was asked ahead and is not wanted after all comes before the answer that is.
    while (!askedAhead_.empty() && askedAhead_.front() != command.sent) {
        dropAnswerAhead();
    }
    if (askedAhead_.empty()) {
        return Exchange::ask(std::move(command));
    }
    askedAhead_.pop_front();
    return next();
}

void POP::askAhead(std::vector<Command> commands) {
    if (!pipelines_) {
        return;
    }
    session_.setMaximumOutstanding(kMaximumAhead);
    for (Command& command : commands) {
        askedAhead_.push_back(command.sent);
        session_.submit(std::move(command));
    }
}

/** Reads an answer that nobody asks for any more. */
void POP::dropAnswerAhead() {
    askedAhead_.pop_front();
    next();
    while (session_.isInResponse()) {
        next();
    }
}

void POP::listAhead(std::int16_t first, std::int16_t last, std::int32_t bodyLines) {
    asRequest([&] {
        listed_.listAhead(*this, first, last, bodyLines);
        if (givesFirstLines_ && !isWithoutQuitAhead_ && !askedAhead_.empty()) {
            askAhead({quitCommand()});
        }
        // The answers are on their way while the caller gets ready for them.
        if (connection_.isOpen() && sendQueued()) {
            renewDeadline();
        }
    });
}

void POP::openAhead(std::int16_t number) {
    asRequest([&] { askAhead({listCommand(number), retrCommand(number), quitCommand()}); });
}

std::vector<std::int16_t> POP::messagesToFetchLater() {
    if (!listed_.toBeFetchedLater().empty() && isToldToEnd()) {
        asRequest([this] { logOnOnceMore(); });
    }
    std::vector<std::int16_t> numbers;
    for (const std::int32_t number : listed_.toBeFetchedLater()) {
        numbers.push_back(static_cast<std::int16_t>(number));
    }
    return numbers;
}

/** True when the server was asked ahead to end the session. Nothing is asked behind that. */
bool POP::isToldToEnd() const {
    return !askedAhead_.empty() && askedAhead_.back() == quitCommand().sent;
}

/**
 * Opens another session for the messages that were to be fetched behind the others. Where the server lets
 * nobody in so soon again, they stay without their lines: no message ends a listing.
 */
void POP::logOnOnceMore() {
    isWithoutQuitAhead_ = true;
    const MailboxTotals totals = totals_;
    std::set<std::int32_t> later = listed_.toBeFetchedLater();
    logOff();
    const int error = platform::errorNumberOf([this] { logOn(); });
    totals_ = totals;
    if (error == 0) {
        listed_.fetchLater(std::move(later));
    } else {
        closeSession();
    }
}

} // namespace poplib
