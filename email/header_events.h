#pragma once

#include "email/messages.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace email {

/**
 * Turns header lines into a summary. One object may serve any number of messages, in any order. What it
 * remembers only saves searching the same text again.
 */
class HeaderEvents {
  public:
    /**
     * Adds one header line; `field` is empty for a folded continuation line.
     *
     * Every continuation line after a Content-Type header is added to ContentType, whichever header it
     * continues. A later From, Subject or Date replaces an earlier one.
     * \throws RuntimeError 5 when ContentType holds a boundary parameter without its two quotes.
     */
    void add(MessageSummary& summary, std::string_view field, std::string_view value);

  private:
    void findBoundary(MessageSummary& summary);

    /** What the last search of a ContentType found; valid while that text only grows at its end. */
    struct LastSearch {
        const MessageSummary* summary = nullptr;
        /** How much of the text was searched. */
        std::size_t length = 0;
        /** Where the boundary parameter begins, 1-based; 0 while there is none. */
        std::size_t parameterAt = 0;
        /** Both quotes were found behind the parameter: what is added at the end changes nothing. */
        bool settled = false;
    };

    LastSearch last_;
};

/** Empties the summary for a new listing: a message without Subject or Date shows an apostrophe for it. */
void resetForListing(MessageSummary& summary);

/** The same, and gives back the memory of all texts that a listing fills. */
void emptyForListing(MessageSummary& summary);

} // namespace email
