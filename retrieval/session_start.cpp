#include "retrieval/session_start.h"

#include "components/poplib/pop.h"
#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/titles.h"
#include "mailbox/log_on.h"
#include "message/mail_mode.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

void logOnAndCount(POPLib::POP& pop) {
    logOn(pop, AfterLogOn::Listing);
    email::credentials.LoggedOn = true;
    const bool isStandard = mailMode() == MailMode::Standard;
    email::mailbox.Messages.setSize(isStandard ? email::MessageTable::kLargest : email::MessageTable::kSize);
    pop.setLinesAreKept(!isStandard);
    email::mailbox.MailboxBytes = pop.mailboxSize();
    email::mailbox.MessageCount = pop.messageCount();
}

void welcomeOnMainWindow() {
    frmMain& main = mainWindow();
    main.setWindowTitle(QStringLiteral("Welcome ") + email::credentials.UserName + QStringLiteral(" To ") +
                        email::programTitle());
    // During a check the window is visible already. It must not come in front of the compose window that the
    // user is writing in.
    if (!main.isVisible()) {
        main.bringUp();
    }
}
