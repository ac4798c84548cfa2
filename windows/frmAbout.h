#pragma once

#include "windows/form.h"

class QLabel;
class QPushButton;

/** What the program is and who made it. */
class frmAbout : public Form {
  public:
    frmAbout();

    // app/about_window.cpp
    void Form_Load() override;
    void Form_Unload() override;
    void cmdOkAbout_Click();
    /** Says how the last connections to the two servers were protected. */
    void showProtections();

    QLabel* lblProduct;
    QLabel* lblDevelopedBy;
    QLabel* lblMaker;
    /** How the connections to the two servers are protected. */
    QLabel* lblPOPServer;
    QLabel* lblSMTPServer;
    QPushButton* cmdOkAbout;
};
