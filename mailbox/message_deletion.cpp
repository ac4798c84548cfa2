#include "components/controls/message_box.h"
#include "email/mailbox.h"
#include "email/titles.h"
#include "mailbox/log_on.h"
#include "mailbox/mailbox_list.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>
#include <QPushButton>

using controls::MessageAnswer;
using controls::MessageButtons;
using email::mailbox;
using poplib::Request;

namespace {
/**
 * Checks that the message can be taken out of the list afterwards. If not, the server must not delete it.
 * \throws RuntimeError 9 for a number outside the table.
 */
void mustBeInTheTable(std::int16_t number) {
    if (mailbox.MessageCount != 1) {
        mailbox.Messages.at(number);
    }
}

void deleteAtTheServer(POPLib::POP& pop, std::int16_t number) {
    logOn(pop);
    pop.setCurrentMessage(number);
    pop.issueRequest(Request::DeleteCurrentMessage);
    // The server removes the message only at QUIT (RFC 1939, section 6).
    pop.issueRequest(Request::LogOffAndDisconnect);
}

/** Numbers the rows from 1 on, since the server does so in the next session. */
void renumber(MSFlexGridLib::MSFlexGrid& grid) {
    for (std::int16_t row = 1; row <= mailbox.MessageCount; ++row) {
        const QString number = QString::number(row);
        if (grid.TextMatrix(row, 0).trimmed() != number) {
            grid.setTextMatrix(row, 0, number);
        }
    }
}

/** Takes the row out of the grid. The records behind the deleted one keep their places in the table. */
void takeOutOfTheList(std::int16_t number) {
    if (mailbox.MessageCount == 1) {
        ResetMailList();
        return;
    }
    const std::int32_t size = mailbox.Messages.at(number).Size;
    mailbox.MailboxBytes = platform::checkedSubtract(mailbox.MailboxBytes, size);
    mailbox.MessageCount = platform::checkedSubtract(mailbox.MessageCount, std::int16_t{1});
    mailbox.LastMessageCount = mailbox.MessageCount;
    MSFlexGridLib::MSFlexGrid& grid = *mainWindow().MailGrid;
    grid.RemoveItem(grid.Row());
    renumber(grid);
    showTotals();
}
} // namespace

void frmMain::cmdDelete_Click() {
    const int row = MailGrid->Row();
    // A row without a number stands for a message that is not fetched yet.
    if (row < 0 || MailGrid->TextMatrix(row, 0).trimmed().isEmpty()) {
        controls::showMessage(QStringLiteral("Please select a message from the list first."),
                              email::programTitle());
        return;
    }
    SelectedMessage = platform::toInteger16(MailGrid->TextMatrix(row, 0));
    MailGrid->showRow(row);
    const MessageAnswer answer =
        controls::showMessageBox({.text = QStringLiteral("Are you sure you want to delete this message?"),
                                  .title = email::programTitle(),
                                  .buttons = MessageButtons::YesNo,
                                  .defaultAnswer = MessageAnswer::No,
                                  .leftFree = MailGrid->placeOfRow(row)});
    if (answer == MessageAnswer::Yes) {
        deleteSelected();
    }
    startAtTheListIfNowhere();
}

void frmMain::deleteSelected() {
    lStats->setText(QStringLiteral("Deleting message..."));
    const WhileDisabled resting(*this);
    const WhileDisabled noExit(*cmdExit);
    POPLib::POP& pop = loginWindow().POP1;
    const std::int16_t number = SelectedMessage;
    const int error = platform::errorNumberOf([&] {
        const WhileHourglass waiting(*this);
        mustBeInTheTable(number);
        deleteAtTheServer(pop, number);
        takeOutOfTheList(number);
    });
    if (error != 0) {
        controls::showMessage(QStringLiteral("Message can not be deleted at this time.  Error# ") +
                                  QString::number(error),
                              email::programTitle());
        pop.leave();
    }
}
