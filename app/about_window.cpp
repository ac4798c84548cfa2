#include "windows/frmAbout.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>

void frmAbout::Form_Load() {
    lblProduct->setText(QStringLiteral("Brindlewake " BRINDLEWAKE_VERSION));
}

void frmAbout::cmdOkAbout_Click() {
    unload(*this);
}

void frmAbout::Form_Unload() {
    mainWindow().activateWindow();
}
