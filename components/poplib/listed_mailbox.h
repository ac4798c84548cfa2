#pragma once

#include "components/poplib/listing_allowance.h"
#include "components/poplib/message_identities.h"
#include "components/poplib/questions.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace poplib {

/** How much the component takes. Tests shorten it. */
struct Limits {
    /** Bytes of one response while listing, most of which are only counted. */
    std::int64_t listingBytes = Pop3Session::kMaximumListingBytes;
    /** Bytes of a message that is fetched whole for a listing, where the server does not know TOP. */
    std::int32_t wholeMessageBytes = 64 << 20;
};

/**
 * The mailbox as it was listed, over all sessions of a run: what every number named, to know it again before
 * anything is deleted. Its plans ask for sizes and first lines, delete, and end a session.
 *
 * Numbers are given anew in every session, and other programs delete too. Nothing is deleted by a number that
 * may name another message by now; see deleteMessage().
 *
 * All plans raise whatever the exchange raises.
 */
class ListedMailbox {
  public:
    /** Takes a header or body line of a message. */
    using TakeLine = std::function<void(const Event& line)>;

    /** The size of a message in bytes, nothing when the server refuses to tell. It is remembered for list().
     */
    std::optional<std::int32_t> size(Exchange& exchange, std::int32_t messageNumber);

    /**
     * Hands over the header and the first body lines, from TOP or, where the server does not know it, from
     * RETR, within the allowance of the whole listing. Without memory for one message the rest of its lines
     * is left out; see lastMessageFitted(). A message that the server does not give, or that is too large to
     * be fetched whole, has no lines.
     */
    void list(Exchange& exchange, std::int32_t messageNumber, std::int32_t bodyLines, const Limits& limits,
              const TakeLine& take);

    /** False when memory has failed for the message that was listed last: not all of it was handed over. */
    bool lastMessageFitted() const noexcept { return lastMessageFitted_; }

    /**
     * Marks the message as deleted, when the number still names what was listed: size, header, first lines
     * and, where there are some, the unique-id agree, for this message and for all that are like it. \throws
     * RuntimeError 20312 when that cannot be told for certain, 20332 when the server refuses.
     */
    void deleteMessage(Exchange& exchange, std::int32_t messageNumber, const Limits& limits);

    /** True when the server is to remove messages at the end of this session. */
    bool hasDeletions() const noexcept { return !deleted_.empty(); }

    /**
     * Asks for the unique-ids of what this session has listed, and says QUIT.
     * \throws RuntimeError 20302 when the server refuses QUIT: what it was to remove is still there (RFC 1939
     * section 6).
     */
    void quit(Exchange& exchange);

    /**
     * The session is over. Numbers move up for the deletions that a QUIT has confirmed; others are still
     * there.
     */
    void endSession();

  private:
    bool listFrom(Exchange& exchange, Command command, const TakeLine& take);
    std::string readLines(Exchange& exchange, const TakeLine& take);

    // deletion.cpp
    void rememberUniqueIds(Exchange& exchange);
    void mustStillBeTheListedMessage(Exchange& exchange, std::int32_t number, const Limits& limits) const;
    bool stillNames(Exchange& exchange, std::int32_t number, const MessageIdentity& identity,
                    const Limits& limits) const;

    MessageIdentities identities_;
    ListingAllowance allowance_;
    /** Of the last listing; a deletion compares as many. */
    std::int32_t listedBodyLines_ = 0;
    bool lastMessageFitted_ = true;

    // What follows concerns one session.

    /** The size that LIST told last, and of which message. */
    std::pair<std::int32_t, std::int32_t> numberAndSize_{0, 0};
    /** Messages that were listed. */
    std::set<std::int32_t> listed_;
    /** Messages that the server will remove at the QUIT. */
    std::set<std::int32_t> deleted_;
    bool quitConfirmed_ = false;
};

} // namespace poplib
