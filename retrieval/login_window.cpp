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
/** What the window has room for above its fields. */
constexpr QSize kLogoRoom(360, 120);
} // namespace

void frmLogin::Form_Load() {
    // It may have been closed, and be made again.
    takeProgramTitle();
    cmdSetup->setVisible(email::isYes(email::settings.ShowSetup));
    MMControl1.setDeviceType(QStringLiteral("WaveAudio"));
    MMControl1.setFileName(QLatin1String(email::kNewMailSoundFileName));
    openWavePlayer(MMControl1);
    const int error = platform::errorNumberOf([this] {
        // As sharp as the best of the screens, since the window may be moved there.
        picLogo->setPixmap(controls::LoadPicture(QLatin1String(email::kLogoFileName), kLogoRoom,
                                                 qGuiApp->devicePixelRatio()));
    });
    if (error != 0) {
        picLogo->setPixmap(controls::LoadPicture());
    }
}

void frmLogin::Form_Unload() {}

// From the first log-on on the window is only hidden: its parts talk to the mail server for the whole run.
// While somebody waits in it for the server, to close it is to wait no longer.
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
    // The way into the setup window where its button is hidden.
    if (KeyCode == kKeyF9 && Shift == kShiftAndControl) {
        cmdSetup_Click();
    }
}

// Whoever types a name will want a connection and then the list: what they need is there before somebody
// waits.
void frmLogin::tUser_Change() {
    transport::loadNetwork();
    mainWindow().prepare();
}

// While another log-on waits, further down the stack, nothing ends.
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

// The request that waits ends with an error, and whoever made it goes on from there.
void frmLogin::giveUp() {
    if (loggingOn_) {
        POP1.giveUp();
    }
}

void frmLogin::tUser_Return() {
    tpwd->setFocus(Qt::TabFocusReason);
}
