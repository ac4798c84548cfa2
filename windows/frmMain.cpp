#include "windows/frmMain.h"

#include "components/controls/announcement.h"
#include "components/controls/button_room.h"
#include "email/credentials.h"
#include "windows/wiring.h"

#include <QAction>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QStyle>

#include <algorithm>
#include <cmath>

frmMain::frmMain() : Form(QStringLiteral("frmMain"), QStringLiteral("Brindlewake")) {
    Frame1 = named<QFrame>("Frame1", this);
    cmdRead = named<QPushButton>("cmdRead", QStringLiteral("&Read "), Frame1);
    cmdDelete = named<QPushButton>("cmdDelete", QStringLiteral("&Delete"), Frame1);
    cmdCmpose = named<QPushButton>("cmdCmpose", QStringLiteral("&Compose Mail"), Frame1);
    cmdGetMail = named<QPushButton>("cmdGetMail", QStringLiteral("&Get New Mail"), Frame1);
    cmdExit = named<QPushButton>("cmdExit", QStringLiteral("E&xit"), Frame1);
    neverGiveTheKeyboardTo(*cmdExit);
    connectHandler(cmdRead, &QPushButton::clicked, this, &frmMain::cmdRead_Click);
    connectHandler(cmdDelete, &QPushButton::clicked, this, &frmMain::cmdDelete_Click);
    connectHandler(cmdCmpose, &QPushButton::clicked, this, &frmMain::cmdCmpose_Click);
    connectHandler(cmdExit, &QPushButton::clicked, this, &frmMain::cmdExit_Click);

    mnuHelp = named<QAction>("mnuHelp", QStringLiteral("&About"), this);
    connectHandler(mnuHelp, &QAction::triggered, this, &frmMain::mnuHelp_Click);
    mnuLogin = named<QAction>("mnuLogin", QStringLiteral("&Log In..."), this);
    mnuLogin->setVisible(false);
    connectHandler(mnuLogin, &QAction::triggered, this, &frmMain::mnuLogin_Click);

    MailGrid = named<MSFlexGridLib::MSFlexGrid>("MailGrid", 5, this);
    MailGrid->setAccessibleName(QStringLiteral("Waiting messages"));
    connectHandler(MailGrid, &QTableWidget::cellClicked, this, &frmMain::MailGrid_Click);
    connectHandler(MailGrid, &QTableWidget::cellDoubleClicked, this, &frmMain::MailGrid_DblClick);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(key), MailGrid, nullptr, nullptr, Qt::WidgetShortcut);
        connectHandler(shortcut, &QShortcut::activated, this, &frmMain::MailGrid_DblClick);
    }

    auto* deleteKey =
        new QShortcut(QKeySequence(Qt::Key_Delete), MailGrid, nullptr, nullptr, Qt::WidgetShortcut);
    QObject::connect(deleteKey, &QShortcut::activated, cmdDelete, &QPushButton::click);

    lStats = named<QLabel>("lStats", this);
    lStats->setTextFormat(Qt::PlainText);
    annNewMail = named<controls::Announcement>("annNewMail", this);
    barProgress = named<MSComctlLib::ProgressBar>("barProgress", this);
    barProgress->setAccessibleName(QStringLiteral("Progress"));
    tmrCheckMail = named<controls::Timer>("tmrCheckMail", this);

    connectHandler(cmdGetMail, &QPushButton::clicked, this, &frmMain::cmdGetMail_Click);
    connectHandler(tmrCheckMail, &QTimer::timeout, this, &frmMain::tmrCheckMail_Timer);

    layOut();
}

void frmMain::showEvent(QShowEvent* event) {
    // The menu bar is made only when the window is shown, since it loads all image plug-ins for its arrow.
    if (layout()->menuBar() == nullptr) {
        auto* menuBar = named<QMenuBar>("menuBar", this);
        QMenu* const help = menuBar->addMenu(QStringLiteral("&Help"));
        help->addActions({mnuHelp, mnuLogin});
        // Log In... is shown to a user who has closed the login window and has no Get New Mail to reopen it.
        QObject::connect(help, &QMenu::aboutToShow, mnuLogin, [this] {
            mnuLogin->setVisible(!cmdGetMail->isVisibleTo(this) && !email::credentials.LoggedOn);
        });
        layout()->setMenuBar(menuBar);
        menuBar->show();
    }
    Form::showEvent(event);
}

void frmMain::enableMailButtons(bool enabled) {
    for (QPushButton* button : mailButtons()) {
        button->setEnabled(enabled);
    }
}

void frmMain::startAtTheList() {
    QWidget* const place = MailGrid->isEnabled() ? static_cast<QWidget*>(MailGrid) : cmdCmpose;
    place->setFocus();
}

void frmMain::startAtTheListIfNowhere() {
    const QWidget* const holder = focusWidget();
    if (holder == nullptr || holder == this || !holder->isEnabled()) {
        startAtTheList();
    }
}

void frmMain::layOut() {
    auto* buttons = new QHBoxLayout(Frame1);
    buttons->setContentsMargins(0, 0, 0, 0);
    for (QPushButton* button : mailButtons()) {
        controls::giveCaptionRoom(*button);
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(cmdExit);

    auto* foot = new QHBoxLayout;
    foot->addWidget(lStats, 1);
    foot->addWidget(barProgress);

    auto* rows = new QVBoxLayout(this);
    rows->addWidget(Frame1);
    rows->addWidget(MailGrid, 1);
    rows->addLayout(foot);

    setTabSequence({cmdRead, cmdDelete, cmdCmpose, cmdGetMail, cmdExit, MailGrid});
    resizeToText(150, 32);
    layout()->activate();
    openAsWideAsTheDatesNeed();
    layout()->invalidate();
    // The grid must have its width now: start-up divides it among the columns before the window is shown.
    layout()->activate();
}

// Makes the window wide enough to show whole dates, or 95 % of the screen's width where they do not fit on
// it.
void frmMain::openAsWideAsTheDatesNeed() {
    constexpr double partOfTheDates = 0.11;
    constexpr int frameOfTheWindow = 16;
    const int cellMargin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, MailGrid) + 1;
    const int date =
        MailGrid->fontMetrics().horizontalAdvance(QStringLiteral("Wed, 30 Nov 2026 20:00:00 +0000")) +
        2 * cellMargin;
    const int besideTheColumns = width() - MailGrid->usableWidth();
    const int wanted = static_cast<int>(std::ceil(date / partOfTheDates)) + besideTheColumns;
    const int screenWidth = screen()->availableSize().width();
    const bool wholeDates = wanted + frameOfTheWindow <= screenWidth;
    resize(std::max(wholeDates ? wanted : screenWidth * 19 / 20, minimumSizeHint().width()), height());
}
