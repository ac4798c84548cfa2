#pragma once

#include "components/controls/directory_list_box.h"
#include "components/controls/drive_list_box.h"
#include "windows/form.h"

class QBoxLayout;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

/** The window in which an administrator edits every setting. */
class frmSetup : public Form {
  public:
    frmSetup();

    // app/setup_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cboAddressIn_Click();
    void cboDrive_Change();
    void cboDir_Change();
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
    controls::DriveListBox* cboDrive;
    controls::DirectoryListBox* cboDir;
    QComboBox* cboPrinter;
    QComboBox* cboSaveCopy;
    QComboBox* cboShowGetMail;
    QComboBox* cboCheckNewMail;
    QLineEdit* txtLDAPServer;
    QLineEdit* txtSearchBase;
    QComboBox* cboAddressIn;
    QPushButton* cmdUpdate;
    QPushButton* cmdExit;

  protected:
    /** Shows two columns where they fit, otherwise one. */
    void resizeEvent(QResizeEvent* event) override;

  private:
    void makeControls();
    QWidget* serverColumn();
    QWidget* programColumn();
    void layOut();
    void keepHintInView(QScrollArea& scroll);

    QBoxLayout* columns_;
    QLabel* saveDirHint_;
    /** The window's width from which on two columns fit side by side. */
    int widthOfTwoColumns_ = 0;
};
