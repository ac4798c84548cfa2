#include "retrieval/summaries.h"

#include "components/poplib/pop.h"
#include "email/header_events.h"
#include "email/mailbox.h"
#include "mailbox/mailbox_list.h"
#include "message/mail_mode.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "windows/frmLogin.h"
#include "windows/windows.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {
/** Body lines fetched with the header for the list. */
constexpr int kSummaryBodyLines = 25;

/** In the standard way the summary gets the decoded fields; in the house's it has what it needs. */
void takeStandardHeader(email::MessageSummary& summary) {
    if (mailMode() == MailMode::Standard) {
        ListedFields fields = standardReader().listed(loginWindow().StandardHeader.fields());
        summary.From = std::move(fields.from);
        summary.Subject = std::move(fields.subject);
        summary.Date = std::move(fields.date);
    }
}

/** Keeps the sender for the address book, which the records of the table would lose after deletions. */
void rememberSender(const std::string& from) {
    constexpr std::size_t mostBytes = 1'000;
    constexpr std::size_t mostSenders = email::MessageTable::kLargest;
    std::deque<std::string>& senders = email::mailbox.Senders;
    senders.push_back(from.substr(0, platform::wholeCharacters(from, mostBytes)));
    if (senders.size() > mostSenders) {
        senders.pop_front();
    }
}
} // namespace

void fetchSummary(POPLib::POP& pop) {
    pop.setCurrentMessage(email::mailbox.CurrentMessage);
    email::MessageSummary& summary = email::mailbox.Messages.at(email::mailbox.CurrentMessage);
    summary.Size = pop.currentMessageSize().value_or(0);
    email::resetForListing(summary);
    loginWindow().StandardHeader.begin();
    pop.setBodyLineLimit(kSummaryBodyLines);
    pop.issueRequest(poplib::Request::RetrieveCurrentMessage);
    const bool fitted = pop.lastMessageFitted() && platform::fitsInMemory([&] {
                            takeStandardHeader(summary);
                            rememberSender(summary.From);
                            writeRow(email::mailbox.CurrentMessage, summary);
                        });
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
    auto& numbers = email::mailbox.MessageNumbers;
    numbers.resize(std::max(numbers.size(), static_cast<std::size_t>(email::mailbox.MessageCount)));
    for (std::int16_t row = 0; row < email::mailbox.MessageCount; ++row) {
        numbers[static_cast<std::size_t>(row)] = static_cast<std::int16_t>(row + 1);
    }
}
