#pragma once

#include "windows/form.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

/** The window in which a message is written. */
class frmSend : public Form {
  public:
    frmSend();

    // compose/compose_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cmdCancel_Click();

    QLabel* lblTo;
    QLineEdit* tTo;
    QPushButton* cmdSendto;
    QLabel* lblCc;
    QLineEdit* tCc;
    QPushButton* cmdCCto;
    QLabel* lblSubject;
    QLineEdit* tSubject;
    QPlainTextEdit* tMessage;
    QLabel* lblAttachment;
    QLineEdit* txtAttachment;
    QPushButton* cmdAttach;
    QLabel* lblSending;
    QPushButton* cmdSndit;
    QPushButton* cmdCancel;

  private:
    void layOut();
};
