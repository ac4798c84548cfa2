// The deletions of the POP3 client, and how it knows a message again.

#include "components/poplib/message_digest.h"
#include "components/poplib/pop.h"
#include "components/poplib/reply_text.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <utility>

namespace POPLib {

using platform::RuntimeError;
namespace errors = platform::errors;

/** Once for all messages that this session has listed: numbers keep their meaning during a session. */
void POP::rememberUniqueIds() {
    if (listed_.empty()) {
        return;
    }
    if (const auto ids = askUniqueIds(listed_)) {
        for (const auto& [number, id] : *ids) {
            identities_.setUniqueId(number, id);
        }
    }
    listed_.clear();
}

/** The unique-ids of these messages, whatever else the server lists; nothing when it has none. */
std::optional<POP::UniqueIds> POP::askUniqueIds(const std::set<std::int32_t>& wanted) {
    UniqueIds ids;
    const bool accepted = readContent(uidlCommand(), [&](const Event& event) {
        const auto* const line = std::get_if<ListingLine>(&event);
        const auto id = line != nullptr ? uniqueId(line->text) : std::nullopt;
        if (id && wanted.contains(id->number)) {
            ids[id->number] = id->text;
        }
    });
    return accepted ? std::optional(std::move(ids)) : std::nullopt;
}

void POP::deleteMessage() {
    if (!connection_.isOpen()) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    const std::int32_t number = currentMessage_;
    mustStillBeTheListedMessage(number);
    if (!ask(deleCommand(number))) {
        throw RuntimeError(errors::DeletionRefused);
    }
    deleted_.insert(number);
}

/**
 * Numbers are given anew in every session, and other programs delete too. In doubt nothing is deleted: all
 * messages that are like this one must still be where they were. A unique-id that differs proves that a
 * number names another message; one that agrees proves nothing, since servers count, repeat and reuse them.
 */
void POP::mustStillBeTheListedMessage(std::int32_t number) {
    const MessageIdentity* const listed = identities_.of(number);
    // Of a message that the server could not give, size and id are all there is.
    if (listed == nullptr || (listed->digest.empty() && !identities_.uniqueIdTells(number))) {
        throw RuntimeError(errors::AnotherMessage);
    }
    const std::vector<std::int32_t> alike = identities_.alike(number);
    const bool haveIds = std::any_of(alike.begin(), alike.end(), [this](std::int32_t same) {
        return !identities_.of(same)->uniqueId.empty();
    });
    const auto ids = haveIds ? askUniqueIds({alike.begin(), alike.end()}) : std::nullopt;
    for (const std::int32_t same : alike) {
        const MessageIdentity& identity = *identities_.of(same);
        // A server that has no ids any more leaves the rest to compare, where there is a rest.
        const bool idStays =
            !ids ? !identity.digest.empty()
                 : identity.uniqueId.empty() || (ids->contains(same) && ids->at(same) == identity.uniqueId);
        if (!deleted_.contains(same) && !(idStays && stillNames(same, identity))) {
            throw RuntimeError(errors::AnotherMessage);
        }
    }
}

/** Whether the number's size, header and first lines are still the same. */
bool POP::stillNames(std::int32_t number, const MessageIdentity& identity) {
    const auto size = ask(listCommand(number));
    const TwoNumbers numbers = size ? twoNumbers(*size) : TwoNumbers();
    if (!size || numbers.first != number || !identity.size || numbers.second != *identity.size) {
        return false;
    }
    MessageDigest digest;
    const auto add = [&digest](const Event& event) { digest.add(event); };
    const bool given = readContent(topCommand(number, listedBodyLines_), add) ||
                       (numbers.second <= limits_.wholeMessageOctets &&
                        readContent(retrCommand(number, listedBodyLines_), add));
    // What could not be given then must not be given now.
    return (given ? digest.result() : std::string()) == identity.digest;
}

} // namespace POPLib
