#include "components/controls/announcement.h"
#include "components/controls/message_box.h"
#include "components/controls/while_not_redrawing.h"
#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "mailbox/mailbox_list.h"
#include "platform/program.h"
#include "platform/runtime_error.h"
#include "platform/while_set.h"
#include "retrieval/failures.h"
#include "retrieval/session_start.h"
#include "retrieval/summaries.h"
#include "retrieval/wave_player_setup.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>

using email::credentials;
using email::mailbox;
using poplib::Request;
namespace errors = platform::errors;

namespace {
void playSoundAgain(MCI::MMControl& player) {
    player.setCommand(QStringLiteral("close"));
    openWavePlayer(player);
    player.setCommand(email::derived.WavCommand);
}

/** Enables or disables the mail buttons, except Get New Mail, which can be used while messages are fetched.
 */
void enableButtons(bool enabled) {
    const frmMain& main = mainWindow();
    for (QPushButton* button : {main.cmdCmpose, main.cmdDelete, main.cmdRead}) {
        button->setEnabled(enabled);
    }
}

/** The list before a check and what the check has added to it. */
struct ListedMail {
    /** Bytes of the whole mailbox before the check. */
    std::int32_t bytesBefore = mailbox.MailboxBytes;
    std::int16_t rowsBefore = std::max(mailbox.MessageCount, mailbox.LastMessageCount);
    /** The last row by now. */
    std::int16_t rows = rowsBefore;
};

/** Brings the newest row into view and gives screen readers the number of new messages. */
void showThatMailHasCome(const ListedMail& listed) {
    mainWindow().MailGrid->showRow(listed.rows);
    const QString text = QString::number(listed.rows - listed.rowsBefore) + QStringLiteral(" new messages");
    // To be found at the foot line later, too.
    mainWindow().lStats->setAccessibleDescription(text);
    mainWindow().annNewMail->tell(text);
}

/** Shows the hourglass over both windows, for as long as this lives. */
struct Hourglasses {
    WhileHourglass overLogin{loginWindow()};
    WhileHourglass overList{mainWindow()};
};

void fetchNewMail(frmLogin& login, ListedMail& listed, std::optional<Hourglasses>& waiting) {
    const auto first = static_cast<std::int16_t>(mailbox.LastMessageCount + 1);
    askAhead(login.POP1, first, mailbox.MessageCount);
    playSoundAgain(login.MMControl1);
    showTotals();
    login.hide();
    enableButtons(false);
    welcomeOnMainWindow();
    mainWindow().MailGrid->setRows(mailbox.MessageCount + 1);
    for (mailbox.CurrentMessage = first; mailbox.CurrentMessage <= mailbox.MessageCount;
         ++mailbox.CurrentMessage) {
        fetchSummary(login.POP1);
        // A check that failed may have fetched this message already, and the user may have opened it since.
        if (mailbox.CurrentMessage > listed.rowsBefore) {
            mainWindow().MailGrid->setRowNew(mailbox.CurrentMessage, true);
        }
        listed.rows = std::max(listed.rows, mailbox.CurrentMessage);
        if (isLastNumber(mailbox.CurrentMessage)) {
            break;
        }
    }
    fetchLateSummaries(login.POP1);
    numberTheRows();
    waiting.reset();
    enableButtons(true);
    login.POP1.issueRequest(Request::LogOffAndDisconnect);
    mailbox.LastMessageCount = mailbox.MessageCount;
    mailbox.NewMailFound = true;
    // The list may have been empty until now.
    UpdateListControls();
    showThatMailHasCome(listed);
}

void checkAtTheServer(frmLogin& login, ListedMail& listed, std::optional<Hourglasses>& waiting) {
    logOnAndCount(login.POP1);
    if (mailbox.LastMessageCount < mailbox.MessageCount) {
        fetchNewMail(login, listed, waiting);
        return;
    }
    // Only messages above the last count are new, so fewer messages than before are not new mail either.
    mainWindow().cmdCmpose->setEnabled(true);
    login.POP1.issueRequest(Request::LogOffAndDisconnect);
    mailbox.NewMailFound = false;
    UpdateListControls();
}

/**
 * Lets the list be used again after a failure that does not end the program. Does nothing while another
 * session is running, which does the same at its end.
 */
void letTheListBeUsed(const POPLib::POP& pop) {
    if (!pop.isRunning()) {
        mainWindow().cmdCmpose->setEnabled(true);
        UpdateListControls();
    }
}

/**
 * Keeps the rows that the check has fetched and drops the others. The server's total also counts messages
 * that were not fetched, so the new total is the one before the check plus the sizes of the new rows.
 * LastMessageCount stays that of the last successful check: the next check fetches from there again.
 */
void keepWhatWasFetched(const ListedMail& listed) {
    std::int64_t bytes = listed.bytesBefore;
    for (auto number = listed.rowsBefore; number < listed.rows;) {
        bytes += mailbox.Messages.at(++number).Size;
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    mailbox.MailboxBytes = static_cast<std::int32_t>(std::min(bytes, most));
    mailbox.MessageCount = listed.rows;
    mainWindow().MailGrid->setRows(std::max<int>(listed.rows, 1) + 1);
    if (listed.rows > listed.rowsBefore) {
        numberTheRows();
        mailbox.NewMailFound = true;
        showThatMailHasCome(listed);
    }
    showTotals();
}

/** The number of message boxes of failed checks that the user has not answered yet. */
int openBoxes = 0;

void tellOfFailedCheck(const FailureBox& box, int error) {
    const platform::WhileSet anotherBox(openBoxes, openBoxes + 1);
    tell(box, error);
}

enum class AfterFailedCheck { TryAgain, KeepWhatHasCome, EndProgram };

constexpr std::array<Failure<AfterFailedCheck>, 8> kCheckFailures = {{
    {errors::MailServerBusy,
     {"Cannot Re-Enter Mail Server, Please Try Again %1", " Mail Error"},
     AfterFailedCheck::TryAgain},
    {errors::LogOnRefused,
     {"Password Or User Name Wrong, Please Try Again %1", " Mail Error"},
     AfterFailedCheck::TryAgain},
    {errors::MailServerTrouble,
     {"There Was Trouble Connecting With The Mail Server, Please Try Again Later ", " Mail"},
     AfterFailedCheck::EndProgram},
    {errors::HostNotFound,
     {"Host Not Found. Please make sure your Settings are correct.", " Mail"},
     AfterFailedCheck::EndProgram},
    {errors::OutOfMemory, {"Message is too large.", " E-mail"}, AfterFailedCheck::KeepWhatHasCome},
    {errors::ConnectionRefused,
     {"Connection Refused by Host. Please Start Program Again ", " Mail Error"},
     AfterFailedCheck::EndProgram},
    {errors::NetworkUnreachable, {"Network is unreachable.", " E-mail"}, AfterFailedCheck::EndProgram},
    {kAnyOtherError, {"Error %1 Please Start Program Again ", " Mail Error"}, AfterFailedCheck::EndProgram},
}};

void checkFailed(frmLogin& login, int error, const ListedMail& listed) {
    const Failure<AfterFailedCheck>& failure = failureOf(kCheckFailures, error);
    switch (failure.then) {
    case AfterFailedCheck::TryAgain:
        tellOfFailedCheck(failure.box, error);
        login.POP1.leave();
        login.cmdLogin->setEnabled(true);
        letTheListBeUsed(login.POP1);
        break;
    case AfterFailedCheck::KeepWhatHasCome:
        keepWhatWasFetched(listed);
        tellOfFailedCheck(failure.box, error);
        letTheListBeUsed(login.POP1);
        break;
    case AfterFailedCheck::EndProgram:
        tell(failure.box, error);
        platform::endProgram();
        break;
    }
}

void checkForNewMail() {
    const MSFlexGridLib::WhileNotRedrawing still(*mainWindow().MailGrid);
    const QString missing =
        credentials.UserName.isEmpty()   ? QStringLiteral("User Name Must Be Entered To Get Mail!")
        : credentials.Password.isEmpty() ? QStringLiteral("Password Must Be Entered To Get Mail!")
                                         : QString();
    if (!missing.isEmpty()) {
        controls::showMessage(missing, email::titleEndingIn(" Mail"));
        return;
    }
    mainWindow().lStats->setAccessibleDescription(QString());
    frmLogin& login = loginWindow();
    std::optional<Hourglasses> waiting(std::in_place);
    login.cmdLogin->setEnabled(false);
    ListedMail listed;
    const int error = platform::errorNumberOf([&] { checkAtTheServer(login, listed, waiting); });
    if (error != 0) {
        checkFailed(login, error, listed);
    }
    mainWindow().startAtTheListIfNowhere();
}
} // namespace

void frmMain::cmdGetMail_Click() {
    lStats->setText(QStringLiteral("Checking for new mail..."));
    checkForNewMail();
    if (!mailbox.NewMailFound) {
        controls::showMessage(QStringLiteral("You have no new mail."), QStringLiteral("Brindlewake"));
    }
    showTotals();
    if (!credentials.LoggedOn) {
        mnuLogin_Click();
    }
}

void frmMain::mnuLogin_Click() {
    loginWindow().bringUp();
}

void frmMain::tmrCheckMail_Timer() {
    // A check that runs while the box of a failed one is open fails too, since the server is busy, and opens
    // a second box. One more box at each interval, until the user comes back to the computer, would be no
    // use.
    constexpr int enough = 2;
    if (openBoxes < enough) {
        checkForNewMail();
    }
}
