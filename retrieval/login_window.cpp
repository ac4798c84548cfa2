#include "components/controls/picture.h"
#include "platform/runtime_error.h"
#include "retrieval/wave_player_setup.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"
#include "windows/windows.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

namespace {
constexpr int kKeyF9 = 120;
constexpr int kShiftAndControl = 3;
} // namespace

void frmLogin::Form_Load() {
    MMControl1.setDeviceType(QStringLiteral("WaveAudio"));
    MMControl1.setFileName(QStringLiteral("Gotmail.wav"));
    openWavePlayer(MMControl1);
    const int error = platform::errorNumberOf(
        [this] { picLogo->setPixmap(controls::LoadPicture(QStringLiteral("tolk.jpg"))); });
    if (error != 0) {
        picLogo->setPixmap(controls::LoadPicture());
    }
}

void frmLogin::Form_Unload() {}

void frmLogin::cmdSetup_Click() {
    setupWindow().bringUp();
}

void frmLogin::Form_KeyDown(int KeyCode, int Shift) {
    // The way into the setup window where its button is hidden.
    if (KeyCode == kKeyF9 && Shift == kShiftAndControl) {
        cmdSetup_Click();
    }
}

void frmLogin::tUser_Return() {
    tpwd->setFocus(Qt::TabFocusReason);
}
