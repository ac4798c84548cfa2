#include "retrieval/summaries.h"

#include "components/poplib/pop.h"
#include "email/header_events.h"
#include "email/mailbox.h"
#include "mailbox/mailbox_list.h"
#include "platform/runtime_error.h"

#include <cstddef>

namespace {
/** Body lines fetched with the header for the list. */
constexpr int kSummaryBodyLines = 25;
} // namespace

void fetchSummary(POPLib::POP& pop) {
    pop.setCurrentMessage(email::mailbox.CurrentMessage);
    email::MessageSummary& summary = email::mailbox.Messages.at(email::mailbox.CurrentMessage);
    summary.Size = pop.currentMessageSize().value_or(0);
    email::resetForListing(summary);
    pop.setBodyLineLimit(kSummaryBodyLines);
    pop.issueRequest(poplib::Request::RetrieveCurrentMessage);
    const bool fitted = pop.lastMessageFitted() &&
                        platform::fitsInMemory([&] { writeRow(email::mailbox.CurrentMessage, summary); });
    if (!fitted) {
        // Running out of memory for one message must not end the listing of the others.
        email::emptyForListing(summary);
        writeRow(email::mailbox.CurrentMessage, summary);
    }
}

void askAhead(POPLib::POP& pop, std::int16_t first, std::int16_t last) {
    pop.listAhead(first, last, kSummaryBodyLines);
}

void fetchLateSummaries(POPLib::POP& pop, const std::function<void()>& beforeEach) {
    const std::int16_t after = email::mailbox.CurrentMessage;
    for (const std::int16_t number : pop.messagesToFetchLater()) {
        email::mailbox.CurrentMessage = number;
        if (beforeEach) {
            beforeEach();
        }
        fetchSummary(pop);
    }
    email::mailbox.CurrentMessage = after;
}

void numberTheRows() {
    for (std::int16_t row = 0; row < email::mailbox.MessageCount; ++row) {
        email::mailbox.MessageNumbers.at(static_cast<std::size_t>(row)) = static_cast<std::int16_t>(row + 1);
    }
}
