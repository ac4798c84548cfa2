#include "windows/frmLogin.h"

#include "windows/wiring.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

#include <chrono>

namespace {
/** The delay keeps the line and the bar from flickering during a quick log-on. */
constexpr std::chrono::milliseconds kBeforeWaitingIsShown{300};

/** Hides the control but keeps its room in the layout, so that nothing moves when it is shown. */
void showOnlyAtTimes(QWidget* control) {
    QSizePolicy policy = control->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    control->setSizePolicy(policy);
    control->hide();
}

/** Returns the key code that Form_KeyDown() takes: 112 for F1 to 123 for F12, 0 for any other key. */
int keyCodeOf(int key) {
    constexpr int keyCodeF1 = 112;
    const bool functionKey = key >= Qt::Key_F1 && key <= Qt::Key_F12;
    return functionKey ? keyCodeF1 + key - Qt::Key_F1 : 0;
}

int shiftMaskOf(Qt::KeyboardModifiers modifiers) {
    return (modifiers.testFlag(Qt::ShiftModifier) ? 1 : 0) +
           (modifiers.testFlag(Qt::ControlModifier) ? 2 : 0) + (modifiers.testFlag(Qt::AltModifier) ? 4 : 0);
}
} // namespace

frmLogin::frmLogin() : Form(QStringLiteral("frmLogin"), QStringLiteral("Brindlewake")) {
    picLogo = named<QLabel>("picLogo", this);
    picLogo->setAlignment(Qt::AlignCenter);
    picLogo->setAccessibleName(QStringLiteral("Logo"));

    lUser = named<QLabel>("lUser", QStringLiteral("User Name:"), this);
    tUser = named<QLineEdit>("tUser", this);
    lUser->setBuddy(tUser);
    connectHandler(tUser, &QLineEdit::returnPressed, this, &frmLogin::tUser_Return);
    connectHandler(tUser, &QLineEdit::textEdited, this, &frmLogin::tUser_Change);
    lPwd = named<QLabel>("lPwd", QStringLiteral("Password:"), this);
    tpwd = named<controls::PasswordBox>("tpwd", this);
    lPwd->setBuddy(tpwd);

    cmdLogin = named<QPushButton>("cmdLogin", QStringLiteral("&Get Mail"), this);
    connectHandler(cmdLogin, &QPushButton::clicked, this, &frmLogin::cmdLogin_Click);
    QObject::connect(tpwd, &QLineEdit::returnPressed, cmdLogin, &QPushButton::click);
    cmdSetup = named<QPushButton>("cmdSetup", QStringLiteral("S&etup"), this);
    connectHandler(cmdSetup, &QPushButton::clicked, this, &frmLogin::cmdSetup_Click);
    tmrProgressTimer = named<controls::Timer>("tmrProgressTimer", this);

    lblWaiting =
        named<QLabel>("lblWaiting", QStringLiteral("Waiting for the mail server. Escape gives up."), this);
    barWaiting = named<QProgressBar>("barWaiting", this);
    barWaiting->setAccessibleName(QStringLiteral("Waiting for the mail server"));
    barWaiting->setTextVisible(false);
    // The bar moves without an end, since nobody knows how long the server takes.
    barWaiting->setRange(0, 0);
    showOnlyAtTimes(lblWaiting);
    showOnlyAtTimes(barWaiting);
    tmrWaiting = named<controls::Timer>("tmrWaiting", this);
    tmrWaiting->setSingleShot(true);
    tmrWaiting->setPeriod(static_cast<int>(kBeforeWaitingIsShown.count()));
    connectHandler(tmrWaiting, &QTimer::timeout, this, &frmLogin::tmrWaiting_Timer);

    // The POP3 client calls these during its requests. What they throw reaches the caller of the request.
    POP1.RawHeader = [this](const std::string& line) { POP1_RawHeader(line); };
    POP1.Header = [this](const std::string& field, const std::string& value) { POP1_Header(field, value); };
    POP1.Transfer = [this](std::int32_t bytes, const std::string& text) { POP1_Transfer(bytes, text); };
    POP1.Protected = [this](const transport::Protection& protection) { POP1_Protected(protection); };
    POP1.PITrail = [this](poplib::Direction direction, const std::string& message) {
        POP1_PITrail(direction, message);
    };
    layOut();
}

void frmLogin::layOut() {
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSetup);
    buttons->addWidget(cmdLogin);

    auto* grid = new QGridLayout(this);
    grid->addWidget(picLogo, 0, 0, 1, 2);
    grid->addWidget(lUser, 1, 0);
    grid->addWidget(tUser, 1, 1);
    grid->addWidget(lPwd, 2, 0);
    grid->addWidget(tpwd, 2, 1);
    auto* waiting = new QHBoxLayout;
    waiting->addWidget(lblWaiting);
    waiting->addWidget(barWaiting, 1);

    grid->addLayout(buttons, 3, 0, 1, 2);
    grid->addLayout(waiting, 4, 0, 1, 2);
    grid->setRowStretch(0, 1);
    grid->setColumnStretch(1, 1);

    setTabSequence({tUser, tpwd, cmdLogin, cmdSetup});
    tUser->setFocus();
}

void frmLogin::keyPressEvent(QKeyEvent* event) {
    const int keyCode = keyCodeOf(event->key());
    const int shift = shiftMaskOf(event->modifiers());
    runHandler([&] { Form_KeyDown(keyCode, shift); });
    if (event->key() == Qt::Key_Escape) {
        giveUp();
        return;
    }
    Form::keyPressEvent(event);
}
