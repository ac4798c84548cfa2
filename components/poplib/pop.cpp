#include "components/poplib/pop.h"

#include "components/poplib/message_digest.h"
#include "components/poplib/reply_text.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/while_true.h"

#include <algorithm>
#include <utility>

namespace POPLib {

using platform::RuntimeError;
namespace errors = platform::errors;

namespace {
int numberOf(transport::Outcome outcome) {
    return transport::openingErrorNumber(outcome, errors::MailServerTrouble, errors::MailServerTrouble);
}
} // namespace

template <class Action>
void POP::asRequest(const Action& action) {
    if (running_) {
        throw RuntimeError(errors::MailServerBusy);
    }
    const platform::WhileTrue running(running_);
    givenUp_ = false;
    try {
        action();
    } catch (...) {
        // Whoever threw, a listener included: an answer may be half read, so nothing further can be asked.
        if (!logOnRefused_ && !givenUp_) {
            closeSession();
        }
        if (!givenUp_) {
            throw;
        }
    }
    // What had come by then may have been enough for the request, but the connection is closed.
    if (givenUp_) {
        closeSession();
        throw RuntimeError(errors::GivenUp);
    }
}

void POP::issueRequest(Request request) {
    switch (request) {
    case Request::ConnectAndLogOn:
        // A refused log-on keeps the session until its log-off, also when the server has hung up meanwhile.
        if (logOnRefused_ || connection_.isOpen()) {
            throw RuntimeError(errors::MailServerBusy);
        }
        asRequest([this] { logOn(); });
        break;
    case Request::LogOffAndDisconnect:
        // A session that is busy belongs to the request further down the stack, which goes on with it.
        if (!running_ && (logOnRefused_ || connection_.isOpen())) {
            asRequest([this] { logOff(); });
        }
        break;
    case Request::RetrieveCurrentMessage:
        asRequest([this] { retrieve(); });
        break;
    case Request::DeleteCurrentMessage:
        asRequest([this] { deleteMessage(); });
        break;
    }
}

void POP::giveUp() {
    if (running_) {
        givenUp_ = true;
        connection_.abort();
    }
}

void POP::leave() noexcept {
    // After any error the session is closed, so nothing is left to be done about one.
    static_cast<void>(platform::errorNumberOf([this] { issueRequest(Request::LogOffAndDisconnect); }));
}

std::optional<std::int32_t> POP::currentMessageSize() {
    std::optional<std::int32_t> size;
    asRequest([&] {
        numberAndSize_ = {};
        const Command list = listCommand(currentMessage_);
        const auto text = ask(list);
        if (!text) {
            return;
        }
        const TwoNumbers numbers = twoNumbers(*text);
        if (numbers.first != list.messageNumber) {
            throw RuntimeError(errors::MailServerTrouble);
        }
        size = platform::checkedTo<std::int32_t>(numbers.second);
        numberAndSize_ = {list.messageNumber, *size};
    });
    return size;
}

void POP::logOn() {
    logOnRefused_ = false;
    roundTrips_ = 0;
    if (!canBeSentAsArgument(loginUser_) || !canBeSentAsArgument(loginPassword_)) {
        throw RuntimeError(errors::LogOnRefused);
    }
    const auto server = transport::parseServerName(mailServer_, kDefaultPort);
    if (!server) {
        throw RuntimeError(errors::HostNotFound);
    }
    // Whoever runs while this waits may set another name for a log-on of its own.
    const Command user = userCommand(loginUser_);
    const Command password = passCommand(loginPassword_);
    session_ = Pop3Session(limits_.listingOctets);
    const transport::Outcome outcome = connection_.open(*server, QDeadlineTimer(timeouts_.answer));
    if (outcome != transport::Outcome::Done) {
        throw RuntimeError(numberOf(outcome));
    }
    renewDeadline();
    raise(awaitEvent()); // the greeting
    mustAccept(user);
    mustAccept(password);
    const auto totals = ask(statCommand());
    if (!totals) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    const TwoNumbers numbers = twoNumbers(*totals);
    messageCount_ = platform::checkedTo<std::int16_t>(numbers.first);
    mailboxSize_ = platform::checkedTo<std::int32_t>(numbers.second);
}

void POP::logOff() {
    if (logOnRefused_ || deleted_.empty()) {
        // A courtesy: the server may have hung up already, and nothing depends on its answers. Without
        // unique-ids a deletion compares what it knows.
        waitNoLongerThan(timeouts_.farewell);
        static_cast<void>(platform::errorNumberOf([this] {
            rememberUniqueIds();
            ask(quitCommand());
        }));
        closeSession();
        return;
    }
    rememberUniqueIds();
    const bool accepted = ask(quitCommand()).has_value();
    const std::set<std::int32_t> deleted = std::exchange(deleted_, {});
    closeSession();
    // RFC 1939 section 6: -ERR to QUIT means that a message marked as deleted is still there.
    if (!accepted && !deleted.empty()) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    std::for_each(deleted.rbegin(), deleted.rend(),
                  [this](std::int32_t number) { identities_.remove(number); });
}

void POP::retrieve() {
    const bool listing = bodyLineLimit_ > 0;
    const Command whole = retrCommand(currentMessage_, bodyLineLimit_);
    // For its row in the list no very large message is fetched whole.
    const bool tooLarge = listing && numberAndSize_.first == whole.messageNumber &&
                          numberAndSize_.second > limits_.wholeMessageOctets;
    // TOP is optional (RFC 1939 section 7).
    const bool given = (listing && fetchContent(topCommand(currentMessage_, bodyLineLimit_))) ||
                       (!tooLarge && fetchContent(whole));
    // A list has a row for every message, also for one without any events.
    if (!given && !listing) {
        throw RuntimeError(errors::MessageNotGiven);
    }
}

/** Raises the events of a TOP or RETR answer; false when the server refused the command. */
bool POP::fetchContent(Command command) {
    if (command.bodyLineLimit > 0) {
        return listContent(std::move(command));
    }
    return readContent(std::move(command), [this](const Event& event) { raise(event); });
}

/** The same for a listing, which remembers what the number names. */
bool POP::listContent(Command command) {
    const std::int32_t number = command.messageNumber;
    if (number == 1) {
        // The whole mailbox is listed anew.
        identities_ = {};
        allowance_ = {};
    }
    allowance_.beginMessage();
    lastMessageFitted_ = true;
    listedBodyLines_ = command.bodyLineLimit;
    const bool accepted = ask(std::move(command)).has_value();
    MessageIdentity identity;
    if (numberAndSize_.first == number) {
        identity.size = numberAndSize_.second;
    }
    if (accepted) {
        identity.digest = readListed();
    }
    identities_.remember(number, std::move(identity));
    listed_.insert(number);
    return accepted;
}

/**
 * Raises the events of an accepted answer to its end, and returns their digest. When memory fails on the way,
 * the rest is only read, for the sake of the messages behind this one, and the digest is empty.
 */
std::string POP::readListed() {
    MessageDigest digest;
    for (bool ended = false; !ended;) {
        const bool fitted = platform::fitsInMemory([&] {
            Event event = awaitEvent();
            ended = std::holds_alternative<ContentEnded>(event);
            if (lastMessageFitted_) {
                digest.add(event);
                raiseWithinAllowance(event);
            }
        });
        lastMessageFitted_ = lastMessageFitted_ && fitted;
    }
    return lastMessageFitted_ ? digest.result() : std::string();
}

void POP::raiseWithinAllowance(Event& event) {
    auto* const header = std::get_if<HeaderLine>(&event);
    auto* const body = std::get_if<BodyLine>(&event);
    const bool left = header != nullptr ? allowance_.cut(*header) : body == nullptr || allowance_.cut(*body);
    if (left) {
        raise(event);
    }
}

} // namespace POPLib
