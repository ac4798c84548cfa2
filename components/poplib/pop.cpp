#include "components/poplib/pop.h"

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
    try {
        action();
    } catch (...) {
        // Whoever threw, a listener included: an answer may be half read, so nothing further can be asked.
        if (!logOnRefused_) {
            closeSession();
        }
        throw;
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

void POP::leave() noexcept {
    // After any error the session is closed, so nothing is left to be done about one.
    static_cast<void>(platform::errorNumberOf([this] { issueRequest(Request::LogOffAndDisconnect); }));
}

std::optional<std::int32_t> POP::currentMessageSize() {
    std::optional<std::int32_t> size;
    asRequest([&] {
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
    patience_ = timeouts_.answer;
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
    session_ = Pop3Session();
    const transport::Outcome outcome = connection_.open(*server, QDeadlineTimer(patience_));
    if (outcome != transport::Outcome::Done) {
        throw RuntimeError(numberOf(outcome));
    }
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
    if (logOnRefused_) {
        // A courtesy: the server may have hung up already, and nothing depends on its answer.
        patience_ = timeouts_.farewell;
        static_cast<void>(platform::errorNumberOf([this] { ask(quitCommand()); }));
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
    // TOP is optional (RFC 1939 section 7).
    const bool given =
        (listing && fetchContent(topCommand(currentMessage_, bodyLineLimit_))) || fetchContent(whole);
    // A list has a row for every message, also for one without any events.
    if (!given && !listing) {
        throw RuntimeError(errors::MessageNotGiven);
    }
}

/** Raises the events of a TOP or RETR answer; false when the server refused the command. */
bool POP::fetchContent(Command command) {
    const std::int32_t number = command.messageNumber;
    const bool listing = command.bodyLineLimit > 0;
    HeaderDigest digest;
    const bool accepted = readContent(std::move(command), [&](const Event& event) {
        if (const auto* header = std::get_if<HeaderLine>(&event); listing && header != nullptr) {
            digest.add(header->field, header->value);
        }
        raise(event);
    });
    if (listing) {
        if (number == 1) {
            // The whole mailbox is listed anew.
            identities_ = {};
        }
        const bool sizeKnown = numberAndSize_.first == number;
        identities_.remember(
            number, {sizeKnown ? numberAndSize_.second : 0, accepted ? digest.result() : std::string(), {}});
        listed_.insert(number);
    }
    return accepted;
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
        if (std::holds_alternative<Failed>(event)) {
            raise(event);
        }
        take(event);
    }
}

/** The unique-ids of all messages; nothing when the server has none. */
std::optional<std::map<std::int32_t, std::string>> POP::askUniqueIds() {
    std::map<std::int32_t, std::string> ids;
    const bool accepted = readContent(uidlCommand(), [&ids](const Event& event) {
        const auto* const line = std::get_if<ListingLine>(&event);
        if (const auto id = line != nullptr ? uniqueId(line->text) : std::nullopt) {
            ids[id->number] = id->text;
        }
    });
    return accepted ? std::optional(std::move(ids)) : std::nullopt;
}

/** Once for all messages that this session has listed: numbers keep their meaning during a session. */
void POP::rememberUniqueIds() {
    if (listed_.empty()) {
        return;
    }
    if (const auto ids = askUniqueIds()) {
        for (const auto& [number, id] : *ids) {
            if (listed_.contains(number)) {
                identities_.setUniqueId(number, id);
            }
        }
    }
    listed_.clear();
}

void POP::deleteMessage() {
    if (!connection_.isOpen()) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    const std::int32_t number = currentMessage_;
    mustStillBeTheListedMessage(number);
    if (!ask(deleCommand(number))) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    deleted_.insert(number);
}

/**
 * Numbers are given anew in every session, and other programs delete too. In doubt nothing is deleted: all
 * messages that cannot be told from this one must still be where they were.
 */
void POP::mustStillBeTheListedMessage(std::int32_t number) {
    const MessageIdentity* const listed = identities_.of(number);
    if (listed == nullptr) {
        throw RuntimeError(errors::AnotherMessage);
    }
    const auto ids = listed->uniqueId.empty() ? std::nullopt : askUniqueIds();
    if (!ids && listed->headerDigest.empty()) {
        throw RuntimeError(errors::AnotherMessage);
    }
    for (const std::int32_t same : identities_.indistinguishable(number, ids.has_value())) {
        const MessageIdentity& identity = *identities_.of(same);
        const bool stays =
            !ids ? stillNames(same, identity) : ids->contains(same) && ids->at(same) == identity.uniqueId;
        if (!stays && !deleted_.contains(same)) {
            throw RuntimeError(errors::AnotherMessage);
        }
    }
}

/** Whether size and header are still the same. */
bool POP::stillNames(std::int32_t number, const MessageIdentity& identity) {
    const auto size = ask(listCommand(number));
    if (!size || twoNumbers(*size).first != number || twoNumbers(*size).second != identity.size) {
        return false;
    }
    HeaderDigest digest;
    const auto add = [&digest](const Event& event) {
        if (const auto* header = std::get_if<HeaderLine>(&event)) {
            digest.add(header->field, header->value);
        }
    };
    const bool told = readContent(topCommand(number, 0), add) || readContent(retrCommand(number), add);
    return told && digest.result() == identity.headerDigest;
}

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

void POP::sendQueued() {
    // What has come unasked must be seen before a command goes out that it could pass for the answer to.
    if (session_.underWay() == 0 && session_.state() != Pop3Session::State::Greeting &&
        connection_.hasBytes()) {
        session_.receive(connection_.takeBytes());
    }
    const std::string output = session_.takeOutput();
    if (output.empty()) {
        return;
    }
    connection_.send(output);
    ++roundTrips_;
    if (PITrail) {
        for (const std::string& shown : session_.shownOutput()) {
            PITrail(Direction::ToServer, shown);
        }
    }
}

Event POP::awaitEvent() {
    // Most lines of an answer have come with the ones before: they need neither a deadline nor the socket.
    if (session_.isInContent()) {
        if (auto event = session_.nextEvent()) {
            return *std::move(event);
        }
    }
    if (connection_.isOpen()) {
        sendQueued();
    }
    std::uint64_t progress = session_.progress();
    QDeadlineTimer deadline(patience_);
    for (;;) {
        // What has come is used up first, also from a server that has hung up since.
        if (auto event = session_.nextEvent()) {
            return *std::move(event);
        }
        if (session_.progress() != progress) {
            progress = session_.progress();
            deadline.setRemainingTime(patience_);
        }
        if (!connection_.isOpen() || connection_.waitForBytes(deadline) != transport::Outcome::Done) {
            throw RuntimeError(errors::MailServerTrouble);
        }
        session_.receive(connection_.takeBytes());
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
    } else if (const auto* failed = std::get_if<Failed>(&event)) {
        throw RuntimeError(failed->kind == FailureKind::TooLarge ? errors::OutOfMemory
                                                                 : errors::MailServerTrouble);
    }
}

void POP::closeSession() {
    logOnRefused_ = false;
    listed_.clear();
    deleted_.clear();
    // Nothing of an answer that was not read to its end may reach a later request.
    session_ = Pop3Session();
    connection_.close();
}

} // namespace POPLib
