#include "components/controls/message_box.h"
#include "email/box_texts.h"
#include "email/mailbox.h"
#include "email/opening.h"
#include "email/shared_settings.h"
#include "mailbox/mailbox_list.h"
#include "message/attachment_file.h"
#include "message/mail_mode.h"
#include "message/reader_in_use.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/while_true.h"
#include "reader/fetch_message.h"
#include "reader/message_fields.h"
#include "reader/standard_message.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <optional>
#include <string>
#include <utility>

using email::mailbox;
using email::opening;
namespace errors = platform::errors;

namespace {
/**
 * Returns the message window, emptied: an earlier opening that failed may have left parts of another message
 * in it.
 */
frmFrom& emptyMessageWindow() {
    frmFrom& window = messageWindow();
    window.tMessage->setBytes({});
    emptyAttachments(window);
    window.cmdSave->setEnabled(false);
    return window;
}

/** A message that has been read. Its last attachment is in the attachment's file. */
struct KeptMessage {
    ReadMessage read;
    /** The file name of the attachment that was written last, even if writing it failed. */
    std::optional<std::string> attachment;
    int error = 0;
};

/** Reads the message and writes each attachment to the attachment's file, over the one before. */
KeptMessage readAndKeep(const email::MessageSummary& message) {
    KeptMessage kept{readMessage(message), {}, 0};
    kept.error = platform::errorNumberOf([&kept] {
        for (const FoundAttachment& attachment : kept.read.attachments) {
            kept.attachment = attachment.name;
            writeAttachment(attachment.part);
        }
    });
    if (kept.error == 0) {
        kept.error = kept.read.error;
    }
    return kept;
}

/**
 * Reads the message into the window, which keeps what was found before an error.
 * \throws RuntimeError the error that stopped the reading or the writing of an attachment.
 */
void showMessage(email::MessageSummary& message, frmFrom& window) {
    KeptMessage kept;
    readWhereItBelongs(message.BodyText.size(), [&] { kept = readAndKeep(message); });
    if (!kept.read.text && kept.error == 0) {
        controls::showMessage(email::boxOfUnshowableMessage(), QStringLiteral("Brindlewake"));
        return;
    }
    if (kept.attachment) {
        message.AttachmentName = *kept.attachment;
        opening.CurrentAttachment = *kept.attachment;
        window.txtAttachments->setText(oneLine(*kept.attachment));
    }
    window.tMessage->setBytes(std::move(kept.read.text).value_or(std::string()));
    if (kept.error != 0) {
        throw platform::RuntimeError(kept.error);
    }
    window.cmdSave->setEnabled(!window.txtAttachments->text().isEmpty());
}

void restartCheckTimer() {
    if (email::settings.GetMailEvery != 0) {
        mainWindow().tmrCheckMail->setEnabled(true);
    }
}

/**
 * Fetches the message and shows it in the message window. The hourglass ends when the message has been
 * fetched. After a failure it stays until the caller has reported it.
 */
void openMessage(int number, std::optional<WhileHourglass>& waiting) {
    frmMain& main = mainWindow();
    // A running check uses CurrentMessage for the message that it is fetching.
    if (loginWindow().POP1.isRunning()) {
        throw platform::RuntimeError(errors::MailServerBusy);
    }
    mailbox.CurrentMessage = platform::checkedTo<std::int16_t>(number);
    waiting.emplace(main);
    main.lStats->setText(QStringLiteral("Opening message..."));
    main.tmrCheckMail->setEnabled(false);
    fetchMessage();
    main.barProgress->setProgress(0);
    main.lStats->setText(QStringLiteral("Done"));
    waiting.reset();

    const WhileDisabled resting(main);
    email::MessageSummary& message = mailbox.Messages.at(mailbox.CurrentMessage);
    frmFrom& window = emptyMessageWindow();
    window.OpenMessage = mailbox.CurrentMessage;
    if (mailMode() == MailMode::Standard) {
        showStandardMessage(message, window);
    } else {
        showFields(message, window);
        showMessage(message, window);
    }
}

/** Reports the failure and enables the window's controls again, unless another session is using them. */
void openingFailed(int error) {
    controls::showMessage(email::boxOfFailedOpening(error), QStringLiteral("Brindlewake"));
    frmMain& main = mainWindow();
    POPLib::POP& pop = loginWindow().POP1;
    if (pop.isRunning()) {
        return;
    }
    // A session that failed stays open until its failure has been reported.
    pop.leave();
    main.setEnabled(true);
    main.enableMailButtons(true);
    main.MailGrid->setEnabled(true);
    // The list lost the keyboard focus when it was disabled.
    main.MailGrid->setFocus();
    main.barProgress->setProgress(0);
    showTotals();
    restartCheckTimer();
}
} // namespace

void frmMain::MailGrid_DblClick() {
    // The user may double-click again: the window stays responsive while a message is fetched.
    if (opening_ || MailGrid->Row() < 0) {
        return;
    }
    const platform::WhileTrue opens(opening_);
    std::optional<WhileHourglass> waiting;
    const int error = platform::errorNumberOf([&] { openMessage(MailGrid->Row(), waiting); });
    if (error != 0) {
        openingFailed(error);
        return;
    }
    messageWindow().bringUp();
    messageWindow().tMessage->setFocus();
    MailGrid->setRowNew(messageWindow().OpenMessage, false);
    messageWindow().takeControlFrom(*this);
    enableMailButtons(true);
    restartCheckTimer();
}
