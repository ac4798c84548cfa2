#pragma once

#include "components/controls/common_dialog.h"
#include "components/controls/progress_bar.h"
#include "components/controls/text_box.h"
#include "components/controls/timer.h"
#include "components/netcodelib/netcode.h"
#include "components/smtplib/smtp.h"
#include "message/letter.h"
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
    /**
     * Shows the window and returns true when it is open or is sending a message. Returns true also while the
     * user is asked whether to go on with a kept letter. The caller must not fill the window in then.
     */
    bool showIfInUse();
    /** Shows the window, with the focus in the field. The opener is disabled until this window is closed. */
    void openFrom(Form& opener, QWidget& field);

    // compose/find_address.cpp
    void cmdSendto_Click();
    void cmdCCto_Click();

    // compose/keep_letter.cpp
    /**
     * Offers to go on with the letter that was being written when the program ended, if there is one. Returns
     * true when the letter is in the window now; the caller must not fill in more. If the user answers No,
     * the letter is removed.
     */
    bool goOnWithKeptLetter();
    void letter_Change();
    void tmrKeepLetter_Timer();

    // compose/send.cpp
    void cmdSndit_Click();
    void SMTP1_PITrail(smtplib::Direction Direction, const std::string& Message);
    void SMTP1_Protected(const transport::Protection& protection);
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
    /** What the letter in the window takes along from another message. */
    LetterOrigin origin;
    /** Keeps the letter in the window until the user sends or cancels it. */
    platform::KeptFile keptLetter;

  protected:
    // compose/compose_window.cpp
    /** Only hides a window that is sending, so that it can come back with the message if that fails. */
    void closeEvent(QCloseEvent* event) override;

  private:
    void layOut();
    /** Shows or hides both Find Address buttons. Without them the fields are as wide as the subject field. */
    void showFindAddress(bool shown);

    // compose/find_address.cpp
    /** Closes the window that finds addresses for this one, if it is open. */
    void closeFinding();

    // compose/send.cpp
    void send();
    void transmit(ComposedMessage message);

    // compose/keep_letter.cpp
    void keepLetterNow();
    std::string letterToKeep();
    void letterKept(int error);
    void removeKeptLetter();

    QGridLayout* fields_;
    QPointer<Form> finding_;
    /** The digest of what the file holds, so that the same is not written again; 0 for no file. */
    std::size_t keptDigest_ = 0;
    /** Milliseconds that it took to write the letter the last time. */
    int keepingMs_ = 0;
    platform::BeforeTheEnd keepBeforeTheEnd_{[this] { keepLetterNow(); }};
    bool sending_ = false;
    bool offering_ = false;
};
