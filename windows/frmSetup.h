#pragma once

#include "windows/form.h"

class QComboBox;
class QLineEdit;
class QPushButton;

/** The window in which an administrator edits every setting. */
class frmSetup : public Form {
  public:
    frmSetup();

    // app/setup_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cboAddressIn_Click();
    void cmdUpdate_Click();
    void cmdExit_Click();

    QComboBox* cboSetup;
    QLineEdit* txtPOP;
    QLineEdit* txtSMTP;
    QLineEdit* txtDomain;
    QLineEdit* txtSchool;
    QComboBox* cboPlayWav;
    QComboBox* cboShowDatabase;
    QComboBox* cboAttachments;
    QLineEdit* txtSaveDir;
    QComboBox* cboPrinter;
    QComboBox* cboSaveCopy;
    QComboBox* cboShowGetMail;
    QComboBox* cboCheckNewMail;
    QLineEdit* txtLDAPServer;
    QLineEdit* txtSearchBase;
    QComboBox* cboAddressIn;
    QPushButton* cmdUpdate;
    QPushButton* cmdExit;
};
