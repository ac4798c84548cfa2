#pragma once

#include "components/controls/mmcontrol.h"
#include "components/controls/password_box.h"
#include "components/controls/timer.h"
#include "components/poplib/pop.h"
#include "message/listed_header.h"
#include "windows/form.h"

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

/** The log-on window. After the log-on it is only hidden, since its POP3 client and wave player stay in use.
 */
class frmLogin : public Form {
  public:
    frmLogin();

    // retrieval/login_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void Form_KeyDown(int KeyCode, int Shift);
    void cmdSetup_Click();
    void tUser_Return();
    void tUser_Change();
    void tmrWaiting_Timer();
    void giveUp();

    // retrieval/login.cpp
    void cmdLogin_Click();
    void logInFailed(int error);

    // retrieval/message_events.cpp
    void POP1_RawHeader(const std::string& Line);
    void POP1_Header(const std::string& Field, const std::string& Value);
    void POP1_Transfer(std::int32_t BytesTransferred, const std::string& Text);
    void POP1_Protected(const transport::Protection& Protection);
    void POP1_PITrail(poplib::Direction Direction, const std::string& Message);

    QLabel* picLogo;
    QLabel* lUser;
    QLineEdit* tUser;
    QLabel* lPwd;
    controls::PasswordBox* tpwd;
    QPushButton* cmdLogin;
    QPushButton* cmdSetup;
    controls::Timer* tmrProgressTimer;
    QLabel* lblWaiting;
    QProgressBar* barWaiting;
    controls::Timer* tmrWaiting;
    MCI::MMControl MMControl1;
    POPLib::POP POP1;
    /** The header of the message that is being listed, in the standard way of reading. */
    ListedHeader StandardHeader;

  protected:
    // retrieval/login_window.cpp
    void closeEvent(QCloseEvent* event) override;

    void keyPressEvent(QKeyEvent* event) override;

  private:
    void layOut();

    // retrieval/login_window.cpp
    void endWaiting();

    // retrieval/login.cpp
    void mayTryAgain();

    /** True from Get Mail on until the log-on has failed or the messages are listed. */
    bool loggingOn_ = false;
};
