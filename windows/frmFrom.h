#pragma once

#include "windows/form.h"

/** The window of one opened message. */
class frmFrom : public Form {
  public:
    frmFrom() : Form(QStringLiteral("frmFrom"), QStringLiteral("Brindlewake")) {}

    void Form_Load() override {}

    void Form_Unload() override {}
};
