// Listing: sizes and first lines. The deletions are in deletion.cpp.

#include "components/poplib/listed_mailbox.h"

#include "components/poplib/message_digest.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <vector>

namespace poplib {

namespace {
/** Cuts a line to what the allowance has left for it; false when that is nothing. */
bool isLeft(Event& event, ListingAllowance& allowance) {
    if (auto* const header = std::get_if<HeaderLine>(&event)) {
        return allowance.cut(*header);
    }
    auto* const body = std::get_if<BodyLine>(&event);
    return body == nullptr || allowance.cut(*body);
}
} // namespace

std::optional<std::int32_t> ListedMailbox::size(Exchange& exchange, std::int32_t messageNumber) {
    numberAndSize_ = {};
    const auto known = sizes_.find(messageNumber);
    const std::optional<std::int32_t> size =
        known == sizes_.end() ? askSize(exchange, messageNumber) : std::optional(sizeIn(known->second));
    if (size) {
        numberAndSize_ = {messageNumber, *size};
    }
    return size;
}

void ListedMailbox::listAhead(Exchange& exchange, std::int32_t first, std::int32_t last,
                              std::int32_t bodyLines) {
    if (first > last) {
        return;
    }
    std::vector<Command> commands;
    for (std::int32_t number = first; number <= last; ++number) {
        if (!sizes_.contains(number)) {
            commands.push_back(listCommand(number));
        }
        commands.push_back(topCommand(number, bodyLines));
    }
    commands.push_back(uidlCommand());
    exchange.askAhead(std::move(commands));
}

void ListedMailbox::list(Exchange& exchange, std::int32_t messageNumber, std::int32_t bodyLines,
                         const Limits& limits, const TakeLine& take, WhenRefused whenRefused) {
    // A very large message is not fetched whole just to fill its row in the list.
    const bool tooLarge =
        numberAndSize_.first == messageNumber && numberAndSize_.second > limits.wholeMessageBytes;
    // TOP is optional (RFC 1939 section 7).
    const bool isLater = toBeFetchedLater_.erase(messageNumber) > 0;
    if (messageNumber == 1 && !isLater) {
        // A new listing of the whole mailbox begins with message 1.
        identities_ = {};
        allowance_ = {};
    }
    if ((!isLater && listFrom(exchange, topCommand(messageNumber, bodyLines), take)) || tooLarge) {
        return;
    }
    if (!isLater && whenRefused == WhenRefused::FetchLater) {
        toBeFetchedLater_.insert(messageNumber);
        return;
    }
    listFrom(exchange, retrCommand(messageNumber, bodyLines), take);
}

/** Hands over the lines of a TOP or RETR response and remembers the message; false when it is refused. */
bool ListedMailbox::listFrom(Exchange& exchange, Command command, const TakeLine& take) {
    const std::int32_t number = command.messageNumber;
    allowance_.beginMessage();
    lastMessageFitted_ = true;
    listedBodyLines_ = command.bodyLineLimit;
    const bool accepted = ask(exchange, std::move(command)).has_value();
    MessageIdentity identity;
    if (numberAndSize_.first == number) {
        identity.size = numberAndSize_.second;
    }
    if (accepted) {
        readLines(exchange, take, identity);
    }
    identities_.remember(number, std::move(identity));
    listed_.insert(number);
    return accepted;
}

/**
 * Hands over the lines of an accepted response up to its end, puts their digest into the identity, and takes
 * the server's notes out of its size. When memory runs out on the way, the remaining lines are read and
 * dropped, so that the next messages can still be listed, and the digest stays empty.
 */
void ListedMailbox::readLines(Exchange& exchange, const TakeLine& take, MessageIdentity& identity) {
    MessageDigest digest;
    for (bool ended = false; !ended;) {
        const bool fitted = platform::fitsInMemory([&] {
            Event event = exchange.next();
            ended = std::holds_alternative<ResponseEnded>(event);
            if (lastMessageFitted_) {
                digest.add(event);
                if (!linesAreKept_ || isLeft(event, allowance_)) {
                    take(event);
                }
            }
        });
        lastMessageFitted_ = lastMessageFitted_ && fitted;
    }
    if (!lastMessageFitted_) {
        return;
    }
    identity.digest = digest.result();
    if (identity.size) {
        *identity.size -= digest.bytesOfNotes();
    }
}

void ListedMailbox::quit(Exchange& exchange) {
    rememberUniqueIds(exchange);
    quitConfirmed_ = ask(exchange, quitCommand()).has_value();
    if (!quitConfirmed_ && hasDeletions()) {
        throw platform::RuntimeError(platform::errors::MailServerTrouble);
    }
}

void ListedMailbox::endSession() {
    if (quitConfirmed_) {
        std::for_each(deleted_.rbegin(), deleted_.rend(),
                      [this](std::int32_t number) { identities_.remove(number); });
    }
    quitConfirmed_ = false;
    listed_.clear();
    deleted_.clear();
    numberAndSize_ = {};
    sizes_.clear();
    toBeFetchedLater_.clear();
}

} // namespace poplib
