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
#include <vector>

namespace poplib {

/** How much the component accepts from a server. Tests lower these limits. */
struct Limits {
    /** Largest response while listing, in bytes. Most of them are only counted, not kept. */
    std::int64_t listingBytes = Pop3Session::kMaximumListingBytes;
    /** Largest message, in bytes, that a listing fetches whole when the server does not know TOP. */
    std::int32_t wholeMessageBytes = 64 << 20;
};

/**
 * The mailbox as it was listed, over all sessions of a run. It remembers which message each number named, and
 * compares before it deletes one. Its plans ask for sizes and first lines, delete, and end a session.
 *
 * The server numbers the messages anew in every session, and other programs delete too. A message is not
 * deleted when its number may name another one by now; see deleteMessage().
 *
 * All plans raise whatever the exchange raises.
 */
class ListedMailbox {
  public:
    /** Takes a header or body line of a message. */
    using TakeLine = std::function<void(const Event& line)>;

    /**
     * Whether the lines that are handed over are kept, so that the allowance limits them. When they are not,
     * all lines of a header are handed over.
     */
    void setLinesAreKept(bool kept) noexcept { linesAreKept_ = kept; }

    /** Uses these sizes in this session, instead of asking for each of them. */
    void takeSizes(SizeTexts sizes) { sizes_ = std::move(sizes); }

    /**
     * Tells the exchange what size() and list() are going to ask for these messages, and quit() for all of
     * them.
     */
    void listAhead(Exchange& exchange, std::int32_t first, std::int32_t last, std::int32_t bodyLines);

    /** What list() does for a message whose first lines the server refuses to give. */
    enum class WhenRefused { FetchWhole, FetchLater };

    /** The messages that list() was to fetch later, and has not fetched since. */
    const std::set<std::int32_t>& toBeFetchedLater() const noexcept { return toBeFetchedLater_; }

    /** Takes over in this session what list() was to fetch later in the one before. */
    void fetchLater(std::set<std::int32_t> messages) { toBeFetchedLater_ = std::move(messages); }

    /**
     * The size of a message in bytes; nothing when the server refuses LIST. list() uses it again. Raises what
     * askSize() raises.
     */
    std::optional<std::int32_t> size(Exchange& exchange, std::int32_t messageNumber);

    /**
     * Hands over the header and the first body lines, from TOP or, where the server does not know it, from
     * RETR, within the allowance of the whole listing. When memory runs out for one message, the rest of its
     * lines is left out; see lastMessageFitted(). A message that the server refuses, or that is too large to
     * be fetched whole, has no lines.
     */
    void list(Exchange& exchange, std::int32_t messageNumber, std::int32_t bodyLines, const Limits& limits,
              const TakeLine& take, WhenRefused whenRefused = WhenRefused::FetchWhole);

    /** False when memory ran out for the message listed last: some of its lines were not handed over. */
    bool lastMessageFitted() const noexcept { return lastMessageFitted_; }

    /**
     * Marks the message as deleted (DELE), provided that the number still names the message that was listed:
     * size, header, first lines and, where the server has them, unique-ids must agree, for this message and
     * for all identical ones.
     * \throws RuntimeError 20312 when that is not certain, 20332 when the server refuses DELE.
     */
    void deleteMessage(Exchange& exchange, std::int32_t messageNumber, const Limits& limits);

    /** True when the server is to remove messages at the end of this session. */
    bool hasDeletions() const noexcept { return !deleted_.empty(); }

    /**
     * Asks for the unique-ids of the messages that this session has listed, and sends QUIT.
     * \throws RuntimeError 20302 when the server refuses QUIT although messages are marked as deleted: some
     * or all of them are then still there (RFC 1939 section 6).
     */
    void quit(Exchange& exchange);

    /**
     * Forgets what belongs to the session. Numbers move up for deletions that the reply to QUIT has
     * confirmed; without a confirmation they stay as they are.
     */
    void endSession();

  private:
    bool listFrom(Exchange& exchange, Command command, const TakeLine& take);
    void readLines(Exchange& exchange, const TakeLine& take, MessageIdentity& identity);

    // deletion.cpp
    void rememberUniqueIds(Exchange& exchange);
    void mustStillBeTheListedMessage(Exchange& exchange, std::int32_t number, const Limits& limits) const;
    void askAboutAll(Exchange& exchange, const std::vector<std::int32_t>& numbers, bool withIds) const;
    bool stillNames(Exchange& exchange, std::int32_t number, const MessageIdentity& identity,
                    const Limits& limits) const;

    MessageIdentities identities_;
    ListingAllowance allowance_;
    /** Body lines that the last listing asked for; a deletion compares as many. */
    std::int32_t listedBodyLines_ = 0;
    bool lastMessageFitted_ = true;
    bool linesAreKept_ = true;

    // The members below belong to one session.

    /** The message that size() asked about last, and its size in bytes. */
    std::pair<std::int32_t, std::int32_t> numberAndSize_{0, 0};
    /** What the server has said of all sizes at once. */
    SizeTexts sizes_;
    /** Numbers of the messages of which TOP was refused, and that were not fetched whole yet. */
    std::set<std::int32_t> toBeFetchedLater_;
    /** Numbers of the messages that were listed. */
    std::set<std::int32_t> listed_;
    /** Numbers of the messages that the server will remove at the QUIT. */
    std::set<std::int32_t> deleted_;
    bool quitConfirmed_ = false;
};

} // namespace poplib
