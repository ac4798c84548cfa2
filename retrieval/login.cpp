#include "components/controls/message_box.h"
#include "components/controls/paced_showing.h"
#include "components/controls/while_not_redrawing.h"
#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "email/titles.h"
#include "email/typed_host.h"
#include "mailbox/mailbox_list.h"
#include "platform/checked.h"
#include "platform/program.h"
#include "platform/runtime_error.h"
#include "platform/while_true.h"
#include "retrieval/log_in_failures.h"
#include "retrieval/session_start.h"
#include "retrieval/summaries.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <optional>

using email::credentials;
using email::mailbox;
using email::settings;
using poplib::Request;

namespace {
void prepareList(const POPLib::POP& pop) {
    frmMain& main = mainWindow();
    main.MailGrid->chooseNone();
    for (int row = 1; row < main.MailGrid->Rows(); ++row) {
        main.MailGrid->setRowNew(row, false);
    }
    // An empty list keeps one blank row below the titles.
    main.MailGrid->setRows(mailbox.MessageCount == 0 ? 2 : mailbox.MessageCount + 1);
    mailbox.LastMessageCount = pop.messageCount();
    mailbox.Senders.clear();
    main.barProgress->setMin(0);
    if (pop.messageCount() != 0) {
        main.barProgress->setMax(pop.messageCount());
    }
}

/** The state of the main window while its list is filled; after a failure, until it has been reported. */
struct FillingTheList {
    std::optional<WhileHourglass> waiting;
    std::optional<MSFlexGridLib::WhileNotRedrawing> still;
    /** Tells in the foot line which message is being received. */
    std::optional<controls::PacedShowing> receiving;

    /** A failure may come before the number of the message that has caused it is shown. */
    void showWhereItFailed() {
        if (receiving) {
            receiving->showNow();
        }
    }
};

void showMainWindowBusy(FillingTheList& filling) {
    frmMain& main = mainWindow();
    main.enableMailButtons(false);
    filling.still.emplace(*main.MailGrid);
    filling.waiting.emplace(main);
    // Otherwise Qt would give the keyboard focus to Exit, the only button that is still enabled.
    main.setFocus();
    welcomeOnMainWindow();
    // When the user had closed the login window, the main window is visible already, behind it.
    main.bringUp();
}

void fetchAllSummaries(POPLib::POP& pop, FillingTheList& filling) {
    // This outlives the function when a message cannot be received.
    controls::PacedShowing& receiving = filling.receiving.emplace([] {
        mainWindow().lStats->setText(QStringLiteral("Receiving ") + QString::number(mailbox.CurrentMessage) +
                                     QStringLiteral(" of ") + QString::number(mailbox.MessageCount));
    });
    const auto progress = [] { mainWindow().barProgress->setProgress(mailbox.CurrentMessage); };
    for (mailbox.CurrentMessage = 1; mailbox.CurrentMessage <= mailbox.MessageCount;
         ++mailbox.CurrentMessage) {
        if (mailbox.CurrentMessage == mailbox.MessageCount) {
            receiving.showNow();
        } else {
            receiving.changed();
        }
        fetchSummary(pop);
        progress();
        if (isLastNumber(mailbox.CurrentMessage)) {
            break;
        }
    }
    // These are fetched whole and can take longer than all the others.
    fetchLateSummaries(pop, [&] {
        receiving.showNow();
        progress();
    });
    filling.receiving.reset();
}

void startCheckTimer() {
    constexpr std::int32_t millisecondsPerMinute = 60'000;
    controls::Timer* const timer = mainWindow().tmrCheckMail;
    timer->setPeriod(platform::checkedMultiply(std::int32_t{settings.GetMailEvery}, millisecondsPerMinute));
    if (settings.GetMailEvery != 0) {
        timer->setEnabled(true);
    }
}

void getAllMail(frmLogin& login, FillingTheList& filling) {
    POPLib::POP& pop = login.POP1;
    logOnAndCount(pop);
    prepareList(pop);
    // A far server's answers need a while, in which the main window is shown.
    askAhead(pop, 1, mailbox.MessageCount);
    if (mailbox.MessageCount > 0) {
        login.MMControl1.setCommand(email::derived.WavCommand);
    }
    login.hide();
    showMainWindowBusy(filling);
    fetchAllSummaries(pop, filling);
    showTotals();
    numberTheRows();
    filling.waiting.reset();
    mainWindow().enableMailButtons(true);
    pop.issueRequest(Request::LogOffAndDisconnect);
    mainWindow().barProgress->setProgress(0);
    UpdateListControls();
    mainWindow().startAtTheList();
    mainWindow().MailGrid->showRow(mailbox.MessageCount);
    startCheckTimer();
    // Later sessions take the password from email::credentials. Until here the user might have had to try
    // again.
    login.tpwd->forget();
}
} // namespace

void frmLogin::cmdLogin_Click() {
    if (tUser->text().isEmpty()) {
        controls::showMessage(QStringLiteral("User name must be entered to get mail."),
                              email::programTitle());
        tUser->setFocus();
        return;
    }
    if (tpwd->text().isEmpty()) {
        controls::showMessage(QStringLiteral("Password must be entered to get mail."), email::programTitle());
        tpwd->setFocus();
        return;
    }
    email::takeTypedUserName(tUser->text());
    const WhileHourglass waiting(*this);
    if (focusWidget() == cmdLogin) {
        // A disabled button passes the keyboard focus on, here to the button that opens the setup window.
        tpwd->setFocus();
    }
    cmdLogin->setEnabled(false);
    mainWindow().tmrCheckMail->setEnabled(false);
    // A deep copy, since PasswordBox::forget() overwrites the field's letters in place.
    credentials.Password = QString(tpwd->text().constData(), tpwd->text().size());
    FillingTheList filling;
    const int error = platform::errorNumberOf([&] {
        const platform::WhileTrue loggingOn(loggingOn_);
        tmrWaiting->setEnabled(true);
        getAllMail(*this, filling);
    });
    endWaiting();
    if (error != 0) {
        filling.showWhereItFailed();
        logInFailed(error);
    }
}

void frmLogin::logInFailed(int error) {
    using Then = AfterFailedLogIn;
    const Failure<Then>& failure = logInFailure(error);
    switch (failure.then) {
    case Then::TryAgain:
        POP1.leave();
        tell(failure.box, error);
        mayTryAgain();
        break;
    case Then::TypePasswordAgain:
        // The session stays open while the box is open, so a check that starts meanwhile gets the error of a
        // busy mail server.
        tell(failure.box, error);
        POP1.leave();
        mayTryAgain();
        tpwd->setFocus();
        tpwd->selectAll();
        break;
    case Then::EndProgram:
        tell(failure.box, error);
        platform::endProgram();
        break;
    }
}

void frmLogin::mayTryAgain() {
    cmdLogin->setEnabled(true);
    // The user may have closed the window while we waited.
    if (!isVisible()) {
        bringUp();
    }
}
