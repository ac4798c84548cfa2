#include "windows/frmFind.h"

#include "components/controls/announcement.h"
#include "windows/wiring.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>

namespace {
bool movesTheMark(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return (event.modifiers() & ~Qt::KeypadModifier) == 0;
    default:
        return false;
    }
}
} // namespace

frmFind::frmFind() : Form(QStringLiteral("frmFind"), QStringLiteral("Brindlewake")) {
    constexpr int mostLetters = 200;
    lblFind = named<QLabel>("lblFind", QStringLiteral("&Find:"), this);
    txtFind = named<QLineEdit>("txtFind", this);
    txtFind->setMaxLength(mostLetters);
    txtFind->setClearButtonEnabled(true);
    txtFind->setPlaceholderText(QStringLiteral("A part of a name or of an address"));
    txtFind->installEventFilter(this);
    lblFind->setBuddy(txtFind);
    connectHandler(txtFind, &QLineEdit::textChanged, this, &frmFind::txtFind_Change);
    connectHandler(txtFind, &QLineEdit::returnPressed, this, &frmFind::txtFind_Return);

    lstFound = named<MSFlexGridLib::MSFlexGrid>("lstFound", 3, this);
    lstFound->setAccessibleName(QStringLiteral("Addresses found"));
    connectHandler(lstFound, &QTableWidget::itemSelectionChanged, this, &frmFind::lstFound_Select);
    connectHandler(lstFound, &QTableWidget::cellDoubleClicked, this, &frmFind::cmdUse_Click);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(key), lstFound, nullptr, nullptr, Qt::WidgetShortcut);
        connectHandler(shortcut, &QShortcut::activated, this, &frmFind::cmdUse_Click);
    }

    lblFinding = named<QLabel>("lblFinding", this);
    lblFinding->setTextFormat(Qt::PlainText);
    lblFinding->setWordWrap(true);
    annFound = named<controls::Announcement>("annFound", this);
    cmdUse = named<QPushButton>("cmdUse", QStringLiteral("&Use"), this);
    cmdClose = named<QPushButton>("cmdClose", QStringLiteral("&Close"), this);
    connectHandler(cmdUse, &QPushButton::clicked, this, &frmFind::cmdUse_Click);
    connectHandler(cmdClose, &QPushButton::clicked, this, &frmFind::cmdClose_Click);
    tmrFind = named<controls::Timer>("tmrFind", this);
    connectHandler(tmrFind, &QTimer::timeout, this, &frmFind::tmrFind_Timer);
    closeOnEscape();
    layOut();
}

void frmFind::layOut() {
    auto* head = new QHBoxLayout;
    head->addWidget(lblFind);
    head->addWidget(txtFind, 1);

    auto* foot = new QHBoxLayout;
    foot->addWidget(lblFinding, 1);
    foot->addWidget(cmdUse);
    foot->addWidget(cmdClose);

    auto* rows = new QVBoxLayout(this);
    rows->addLayout(head);
    rows->addWidget(lstFound, 1);
    rows->addLayout(foot);

    setTabSequence({txtFind, lstFound, cmdUse, cmdClose});
    resizeToText(104, 22);
}

void frmFind::resizeEvent(QResizeEvent* event) {
    Form::resizeEvent(event);
    constexpr int partsOfName = 36;
    constexpr int partsOfAddress = 46;
    constexpr int allParts = 100;
    const int width = lstFound->usableWidth();
    const int name = width * partsOfName / allParts;
    const int address = width * partsOfAddress / allParts;
    lstFound->setColWidth(0, name);
    lstFound->setColWidth(1, address);
    lstFound->setColWidth(2, width - name - address);
}

bool frmFind::eventFilter(QObject* control, QEvent* event) {
    const auto* const key = dynamic_cast<QKeyEvent*>(event);
    if (control != txtFind || event->type() != QEvent::KeyPress || key == nullptr || !movesTheMark(*key)) {
        return Form::eventFilter(control, event);
    }
    const int before = lstFound->Row();
    QCoreApplication::sendEvent(lstFound, event);
    if (lstFound->Row() != before) {
        // The keyboard stays in the field, so a screen reader would say nothing by itself.
        runHandler([this] { tellMarkedRow(); });
    }
    return true;
}
