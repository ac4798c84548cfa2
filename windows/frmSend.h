#pragma once

#include "components/controls/common_dialog.h"
#include "components/controls/progress_bar.h"
#include "components/controls/text_box.h"
#include "components/netcodelib/netcode.h"
#include "components/smtplib/smtp.h"
#include "windows/form.h"

class QLabel;
class QLineEdit;
class QPushButton;

/** The window in which a message is written. */
class frmSend : public Form {
  public:
    frmSend();

    // compose/compose_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cmdCancel_Click();
    void cmdAttach_Click();
    void cmdSendto_Click();
    void cmdCCto_Click();
    /**
     * Shows the window when somebody's message is in it, sent at this moment or to be tried again; true then,
     * and nothing may be filled in.
     */
    bool showIfInUse();

    // compose/send.cpp
    void cmdSndit_Click();
    void SMTP1_PITrail(SMTPLib::Direction Direction, const std::string& Message);
    void SMTP1_Progress(std::int64_t bytesDone, std::int64_t bytesTotal);

    QLabel* lblTo;
    QLineEdit* tTo;
    QPushButton* cmdSendto;
    QLabel* lblCc;
    QLineEdit* tCc;
    QPushButton* cmdCCto;
    QLabel* lblSubject;
    QLineEdit* tSubject;
    controls::TextBox* tMessage;
    QLabel* lblAttachment;
    QLineEdit* txtAttachment;
    QPushButton* cmdAttach;
    QLabel* lblSending;
    QPushButton* cmdSndit;
    QPushButton* cmdCancel;
    MSComctlLib::ProgressBar* barSending;
    MSComDlg::CommonDialog dlgAttach;
    NetCodeLib::NetCode ctrNetcode;
    SMTPLib::SMTP SMTP1;

  protected:
    /** Closed while it sends, the window only hides: should the message not go out, it comes back with it. */
    void closeEvent(QCloseEvent* event) override;

  private:
    void layOut();
    void send();
    void giveControlBack();

    bool sending_ = false;
    bool controlGivenBack_ = false;
};
