#pragma once

#include "components/controls/msflexgrid.h"
#include "components/controls/progress_bar.h"
#include "components/controls/timer.h"
#include "components/netcodelib/netcode.h"
#include "windows/form.h"

#include <array>
#include <cstdint>

namespace controls {
class Announcement;
}

class QAction;
class QFrame;
class QLabel;
class QPushButton;

/** The main window: the list of waiting messages and what can be done with them. */
class frmMain : public Form {
  public:
    frmMain();

    // app/start_up.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cmdExit_Click();
    void mnuHelp_Click();

    // mailbox/mailbox_list.cpp
    void MailGrid_Click();
    void cmdRead_Click();

    // mailbox/message_deletion.cpp
    void cmdDelete_Click();

    // reader/open_message.cpp
    void MailGrid_DblClick();

    // retrieval/new_mail_check.cpp
    void cmdGetMail_Click();
    void tmrCheckMail_Timer();
    void mnuLogin_Click();

    // compose/compose_window.cpp
    void cmdCmpose_Click();

    QFrame* Frame1;
    QPushButton* cmdRead;
    QPushButton* cmdDelete;
    QPushButton* cmdCmpose;
    QPushButton* cmdGetMail;
    QPushButton* cmdExit;
    QAction* mnuHelp;
    QAction* mnuLogin;
    MSFlexGridLib::MSFlexGrid* MailGrid;
    QLabel* lStats;
    controls::Announcement* annNewMail;
    MSComctlLib::ProgressBar* barProgress;
    controls::Timer* tmrCheckMail;
    NetCodeLib::NetCode ctrDecode;

    /** What can be done with mail, from the left: Read, Delete, Compose and Get New Mail. */
    std::array<QPushButton*, 4> mailButtons() const { return {cmdRead, cmdDelete, cmdCmpose, cmdGetMail}; }

    void enableMailButtons(bool enabled);

    /** Gives the keyboard focus to the list, or to Compose Mail when the list is disabled. */
    void startAtTheList();

    /** The same, but only when no control has the keyboard focus, as after the last message is deleted. */
    void startAtTheListIfNowhere();

    /** The number of the message whose row was clicked last; 0 until a row is clicked. */
    std::int16_t SelectedMessage = 0;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void layOut();
    void openAsWideAsTheDatesNeed();

    // mailbox/message_deletion.cpp
    void deleteSelected();

    bool opening_ = false;
};
