#pragma once

#include "components/controls/common_dialog.h"
#include "components/controls/progress_bar.h"
#include "components/controls/text_box.h"
#include "components/controls/timer.h"
#include "components/netcodelib/netcode.h"
#include "components/smtplib/smtp.h"
#include "platform/kept_file.h"
#include "platform/program.h"
#include "windows/form.h"

#include <string>

struct ComposedMessage;
class QGridLayout;
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
     * and nothing may be filled in. True also while a kept letter is offered.
     */
    bool showIfInUse();
    /** Shows the window in front of the one that it is opened from, which rests until it is closed. */
    void openFrom(Form& opener, QWidget& field);

    // compose/keep_letter.cpp
    /**
     * Offers to go on with the letter that was being written when the program ended, if there is one. True
     * when it is in the window now, and nothing more may be filled in. A letter that is given up is removed.
     */
    bool goOnWithKeptLetter();
    void letter_Change();
    void tmrKeepLetter_Timer();

    // compose/send.cpp
    void cmdSndit_Click();
    void SMTP1_PITrail(smtplib::Direction Direction, const std::string& Message);
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
    controls::Timer* tmrKeepLetter;
    MSComDlg::CommonDialog dlgAttach;
    NetCodeLib::NetCode ctrNetcode;
    SMTPLib::SMTP SMTP1;
    /** Where the letter in the window is kept until it is sent or given up. */
    platform::KeptFile keptLetter;

  protected:
    // compose/compose_window.cpp
    /** Closed while it sends, the window only hides: should the message not go out, it comes back with it. */
    void closeEvent(QCloseEvent* event) override;

  private:
    void layOut();
    /** Shows or hides both buttons; without them the fields reach as far as the one of the subject. */
    void showFindAddress(bool shown);

    // compose/send.cpp
    void send();
    void transmit(ComposedMessage message);

    // compose/keep_letter.cpp
    void keepLetterNow();
    std::string letterToKeep();
    void letterKept(int error);
    void removeKeptLetter();

    QGridLayout* fields_;
    /** Of what the file holds, so that the same is not written again; 0 for nothing. */
    std::size_t keptDigest_ = 0;
    /** Milliseconds that it took to keep it the last time. */
    int keepingMs_ = 0;
    platform::BeforeTheEnd keepBeforeTheEnd_{[this] { keepLetterNow(); }};
    bool sending_ = false;
    bool offering_ = false;
};
