#pragma once

#include "components/controls/find_bar.h"
#include "components/controls/text_box.h"
#include "message/answered_message.h"
#include "message/standard_reader.h"
#include "windows/form.h"

#include <cstdint>

class QLabel;
class QLineEdit;
class QPushButton;

/** The window of one opened message. */
class frmFrom : public Form {
  public:
    frmFrom();

    // reader/message_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cmdReply_Click();
    void cmdFwrd_Click();
    void CmdPrint_Click();
    void cmdDone_Click();

    // reader/save_attachment.cpp
    void cmdSave_Click();

    QLabel* lblFrom;
    QLineEdit* txtFrom;
    QLabel* lblSubject;
    QLineEdit* txtSubject;
    QLabel* lblAttachments;
    QLineEdit* txtAttachments;
    QPushButton* cmdSave;
    controls::TextBox* tMessage;
    controls::FindBar* barFind;
    QPushButton* cmdReply;
    QPushButton* cmdFwrd;
    QPushButton* CmdPrint;
    QPushButton* cmdDone;

    /** The number of the message in the window. A check for new mail may change CurrentMessage meanwhile. */
    std::int16_t OpenMessage = 0;

    /** What the standard reader has made of the message, but for the text, which the window shows. */
    StandardMessage Read;
    /** What the standard writer has to know of the message when it is answered or forwarded. */
    AnsweredMessage Answered;

  private:
    void makeShortcuts();
    void layOut();
};
