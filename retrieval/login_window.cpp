#include "components/controls/message_box.h"
#include "components/controls/picture.h"
#include "components/transport/stream.h"
#include "email/credentials.h"
#include "email/own_files.h"
#include "email/shared_settings.h"
#include "platform/runtime_error.h"
#include "retrieval/wave_player_setup.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSetup.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSize>

namespace {
constexpr int kKeyF9 = 120;
constexpr int kShiftAndControl = 3;
/** The room for the logo above the fields, in the units that windows are laid out in. */
constexpr QSize kLogoRoom(360, 120);
} // namespace

void frmLogin::Form_Load() {
    // The window is made anew when the user has closed it, so it takes the settings here.
    takeProgramTitle();
    cmdSetup->setVisible(email::isYes(email::settings.ShowSetup));
    MMControl1.setDeviceType(QStringLiteral("WaveAudio"));
    MMControl1.setFileName(QLatin1String(email::kNewMailSoundFileName));
    openWavePlayer(MMControl1);
    const int error = platform::errorNumberOf([this] {
        // As sharp as the screen with the most dots needs, since the window may be moved there.
        picLogo->setPixmap(controls::LoadPicture(QLatin1String(email::kLogoFileName), kLogoRoom,
                                                 qGuiApp->devicePixelRatio()));
    });
    if (error != 0) {
        picLogo->setPixmap(controls::LoadPicture());
    }
}

void frmLogin::Form_Unload() {}

// After the first log-on, closing only hides the window: its POP3 client serves the whole run. While a log-on
// waits for the server, closing the window gives the log-on up.
void frmLogin::closeEvent(QCloseEvent* event) {
    if (loggingOn_ && POP1.isRunning()) {
        event->ignore();
        giveUp();
        return;
    }
    if (email::credentials.UserName.isEmpty() || !isEnabled()) {
        Form::closeEvent(event);
        return;
    }
    event->ignore();
    hide();
    runHandler(keepAWindowVisible);
}

void frmLogin::cmdSetup_Click() {
    setupWindow().bringUp();
}

void frmLogin::Form_KeyDown(int KeyCode, int Shift) {
    // Ctrl+Shift+F9 opens the setup window when its button is hidden.
    if (KeyCode == kKeyF9 && Shift == kShiftAndControl) {
        cmdSetup_Click();
    }
}

// After the user name come a connection, the list and, some time, a box. What they need is loaded while the
// user types, so that nothing is delayed by it later.
void frmLogin::tUser_Change() {
    transport::loadNetwork();
    mainWindow().prepare();
    controls::prepareMessageBoxes();
}

// Another log-on may still be waiting further down the call stack. It keeps the display.
void frmLogin::endWaiting() {
    if (loggingOn_) {
        return;
    }
    tmrWaiting->setEnabled(false);
    lblWaiting->hide();
    barWaiting->hide();
}

void frmLogin::tmrWaiting_Timer() {
    lblWaiting->show();
    barWaiting->show();
}

// The waiting request ends with error 20352, which its caller handles.
void frmLogin::giveUp() {
    if (loggingOn_) {
        POP1.giveUp();
    }
}

void frmLogin::tUser_Return() {
    tpwd->setFocus(Qt::TabFocusReason);
}
