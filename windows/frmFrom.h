#pragma once

#include "components/controls/find_bar.h"
#include "components/controls/text_box.h"
#include "message/answered_message.h"
#include "message/standard_reader.h"
#include "windows/form.h"

#include <cstdint>

class QComboBox;
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
    /** The attachment's name, in the house's way of reading; null in the standard one. */
    QLineEdit* txtAttachments = nullptr;
    /** The names of all attachments, in the standard way of reading; null in the house's. */
    QComboBox* cboAttached = nullptr;
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
    QWidget* makeAttachmentsField();
    void makeShortcuts();
    void layOut();

    /** The one of the two that there is. */
    QWidget* attachmentsField_ = nullptr;
};
