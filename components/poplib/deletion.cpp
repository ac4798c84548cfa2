// How the POP3 client deletes, and how it checks that a number still names the message that was listed.

#include "components/poplib/listed_mailbox.h"
#include "components/poplib/message_digest.h"
#include "components/poplib/reply_text.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <vector>

namespace poplib {

using platform::RuntimeError;
namespace errors = platform::errors;

/** Asks once for all messages that this session has listed: numbers keep their meaning during a session. */
void ListedMailbox::rememberUniqueIds(Exchange& exchange) {
    if (listed_.empty()) {
        return;
    }
    if (const auto ids = askUniqueIds(exchange, listed_)) {
        for (const auto& [number, id] : *ids) {
            identities_.setUniqueId(number, id);
        }
    }
    listed_.clear();
}

void ListedMailbox::deleteMessage(Exchange& exchange, std::int32_t messageNumber, const Limits& limits) {
    mustStillBeTheListedMessage(exchange, messageNumber, limits);
    if (!ask(exchange, deleCommand(messageNumber))) {
        throw RuntimeError(errors::DeletionRefused);
    }
    deleted_.insert(messageNumber);
}

/** Tells the exchange what is going to be asked about these messages. */
void ListedMailbox::askAboutAll(Exchange& exchange, const std::vector<std::int32_t>& numbers,
                                bool withIds) const {
    std::vector<Command> commands;
    if (withIds) {
        commands.push_back(uidlCommand());
    }
    for (const std::int32_t number : numbers) {
        if (!deleted_.contains(number)) {
            commands.push_back(listCommand(number));
            commands.push_back(topCommand(number, listedBodyLines_));
        }
    }
    exchange.askAhead(std::move(commands));
}

/**
 * When in doubt, raises an error, so that nothing is deleted: all messages identical to this one must still
 * have their numbers. A unique-id that differs proves that a number names another message. One that agrees
 * proves nothing, since servers make ids by counting, repeat them and reuse them.
 */
void ListedMailbox::mustStillBeTheListedMessage(Exchange& exchange, std::int32_t number,
                                                const Limits& limits) const {
    const MessageIdentity* const listed = identities_.of(number);
    // When the server did not give the message's lines, only size and unique-id identify it.
    if (listed == nullptr || (listed->digest.empty() && !identities_.uniqueIdTells(number))) {
        throw RuntimeError(errors::AnotherMessage);
    }
    const std::vector<std::int32_t> alike = identities_.alike(number);
    const bool haveIds = std::any_of(alike.begin(), alike.end(), [this](std::int32_t same) {
        return !identities_.of(same)->uniqueId.empty();
    });
    askAboutAll(exchange, alike, haveIds);
    const auto ids = haveIds ? askUniqueIds(exchange, {alike.begin(), alike.end()}) : std::nullopt;
    for (const std::int32_t same : alike) {
        const MessageIdentity& identity = *identities_.of(same);
        // When the server no longer answers UIDL, size and lines must be enough, so there must be a digest of
        // lines.
        const bool idStays =
            !ids ? !identity.digest.empty()
                 : identity.uniqueId.empty() || (ids->contains(same) && ids->at(same) == identity.uniqueId);
        if (!deleted_.contains(same) && !(idStays && stillNames(exchange, same, identity, limits))) {
            throw RuntimeError(errors::AnotherMessage);
        }
    }
}

/** Whether the message under this number still has the same size, header and first lines, notes aside. */
bool ListedMailbox::stillNames(Exchange& exchange, std::int32_t number, const MessageIdentity& identity,
                               const Limits& limits) const {
    const auto size = ask(exchange, listCommand(number));
    const TwoNumbers numbers = size ? twoNumbers(*size) : TwoNumbers();
    // Notes only make a message longer.
    if (!size || numbers.first != number || !identity.size || numbers.second < *identity.size) {
        return false;
    }
    MessageDigest digest;
    const auto add = [&digest](const Event& event) { digest.add(event); };
    const bool given = readResponse(exchange, topCommand(number, listedBodyLines_), add) ||
                       (numbers.second <= limits.wholeMessageBytes &&
                        readResponse(exchange, retrCommand(number, listedBodyLines_), add));
    if (numbers.second - digest.bytesOfNotes() != *identity.size) {
        return false;
    }
    // A message that had no lines when it was listed must have none now.
    return (given ? digest.result() : std::string()) == identity.digest;
}

} // namespace poplib
