#include "reader/fetch_message.h"

#include "email/mailbox.h"
#include "email/opening.h"
#include "mailbox/log_on.h"
#include "platform/runtime_error.h"
#include "platform/while_true.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

using email::mailbox;
using email::opening;
using poplib::Request;

namespace {
void enableButtonsAndList(bool enabled) {
    frmMain& main = mainWindow();
    main.enableMailButtons(enabled);
    main.MailGrid->setEnabled(enabled);
}

/** Empties the record. A message without Subject or Date keeps the two placeholders. */
void resetForOpening(email::MessageSummary& message) {
    message.From.clear();
    message.HeaderText.clear();
    message.RawHeader.clear();
    message.ContentType.clear();
    message.Boundary.clear();
    message.BodyText.clear();
    message.Subject = "'";
    message.Date = "':";
}

/** Restores the record on destruction, unless messageHasCome() was called. */
class KeptRecord {
  public:
    explicit KeptRecord(email::MessageSummary& message) : message_(message), before_(std::move(message)) {
        message_.AttachmentName = before_.AttachmentName;
    }

    ~KeptRecord() {
        if (!hasCome_) {
            message_ = std::move(before_);
        }
    }

    KeptRecord(const KeptRecord&) = delete;
    KeptRecord& operator=(const KeptRecord&) = delete;

    void messageHasCome() noexcept { hasCome_ = true; }

  private:
    email::MessageSummary& message_;
    email::MessageSummary before_;
    bool hasCome_ = false;
};

/**
 * Reserves room for the whole body, which would otherwise be copied again and again while it grows. The size
 * is only what the server claims, so the room is limited.
 */
void reserveBody(email::MessageSummary& message) {
    constexpr std::int32_t most = 64 << 20; // bytes
    message.BodyText.reserve(static_cast<std::size_t>(std::clamp(message.Size, 0, most)));
}
} // namespace

void fetchMessage() {
    enableButtonsAndList(false);
    POPLib::POP& pop = loginWindow().POP1;
    logOn(pop);
    pop.openAhead(mailbox.CurrentMessage);
    pop.setCurrentMessage(mailbox.CurrentMessage);
    email::MessageSummary& message = mailbox.Messages.at(mailbox.CurrentMessage);
    const std::optional<std::int32_t> size = pop.currentMessageSize();
    if (!size) {
        throw platform::RuntimeError(platform::errors::MessageNotGiven);
    }
    KeptRecord record(message);
    message.Size = *size;
    mainWindow().barProgress->setMax(message.Size);
    {
        const platform::WhileTrue retrieving(opening.Retrieving);
        resetForOpening(message);
        reserveBody(message);
        pop.setBodyLineLimit(0);
        pop.issueRequest(Request::RetrieveCurrentMessage);
        pop.issueRequest(Request::LogOffAndDisconnect);
    }
    record.messageHasCome();
    enableButtonsAndList(true);
}
