#pragma once

#include "windows/form.h"

/** The window in which a message is written. */
class frmSend : public Form {
  public:
    frmSend() : Form(QStringLiteral("frmSend"), QStringLiteral("Brindlewake")) {}

    void Form_Load() override {}

    void Form_Unload() override {}
};
