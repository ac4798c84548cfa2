#include "windows/frmFrom.h"

#include "message/mail_mode.h"
#include "windows/wiring.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>

#include <limits>

namespace {
/** Makes a field that the user can read and copy from, but not change. */
QLineEdit* readOnlyField(const char* name, QLabel* label, QWidget* parent) {
    auto* field = named<QLineEdit>(name, parent);
    field->setReadOnly(true);
    field->setMaxLength(std::numeric_limits<int>::max());
    label->setBuddy(field);
    return field;
}
} // namespace

frmFrom::frmFrom() : Form(QStringLiteral("frmFrom"), QStringLiteral("Brindlewake")) {
    lblFrom = named<QLabel>("lblFrom", QStringLiteral("From:"), this);
    txtFrom = readOnlyField("txtFrom", lblFrom, this);
    lblSubject = named<QLabel>("lblSubject", QStringLiteral("Subject:"), this);
    txtSubject = readOnlyField("txtSubject", lblSubject, this);
    lblAttachments = named<QLabel>("lblAttachments", QStringLiteral("Attachments:"), this);
    attachmentsField_ = makeAttachmentsField();
    cmdSave = named<QPushButton>("cmdSave", QStringLiteral(" &Save Attached"), this);
    cmdSave->setEnabled(false);

    tMessage = named<controls::TextBox>("tMessage", this);
    tMessage->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    tMessage->setTabChangesFocus(true);
    tMessage->setAccessibleName(QStringLiteral("Message"));
    barFind = named<controls::FindBar>("barFind", tMessage, this);

    cmdReply = named<QPushButton>("cmdReply", QStringLiteral("&Reply"), this);
    cmdFwrd = named<QPushButton>("cmdFwrd", QStringLiteral("&Foward"), this);
    cmdDone = named<QPushButton>("cmdDone", QStringLiteral("E&xit"), this);
    CmdPrint = named<QPushButton>("CmdPrint", QStringLiteral("&Print"), this);
    connectHandler(cmdSave, &QPushButton::clicked, this, &frmFrom::cmdSave_Click);
    connectHandler(cmdReply, &QPushButton::clicked, this, &frmFrom::cmdReply_Click);
    connectHandler(cmdFwrd, &QPushButton::clicked, this, &frmFrom::cmdFwrd_Click);
    connectHandler(CmdPrint, &QPushButton::clicked, this, &frmFrom::CmdPrint_Click);
    connectHandler(cmdDone, &QPushButton::clicked, this, &frmFrom::cmdDone_Click);
    makeShortcuts();
    layOut();
}

QWidget* frmFrom::makeAttachmentsField() {
    if (mailMode() == MailMode::House) {
        txtAttachments = readOnlyField("txtAttachments", lblAttachments, this);
        return txtAttachments;
    }
    constexpr int fewLetters = 20;
    cboAttached = named<QComboBox>("cboAttached", this);
    // A sender's long name does not make the window wider.
    cboAttached->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cboAttached->setMinimumContentsLength(fewLetters);
    cboAttached->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    cboAttached->setEnabled(false);
    lblAttachments->setBuddy(cboAttached);
    return cboAttached;
}

void frmFrom::makeShortcuts() {
    const auto whenPressed = [this](const QKeySequence& keys, auto action) {
        auto* shortcut = new QShortcut(keys, this);
        QObject::connect(shortcut, &QShortcut::activated, this, action);
    };
    whenPressed(QKeySequence::Find, [this] { barFind->open(); });
    whenPressed(Qt::Key_F3, [this] {
        if (barFind->isVisible()) {
            barFind->findNext();
        } else {
            barFind->open();
        }
    });
    whenPressed(Qt::Key_Escape, [this] {
        if (barFind->isVisible()) {
            barFind->close();
        } else {
            close();
        }
    });
    whenPressed(QKeySequence::ZoomIn, [this] { tMessage->zoomIn(); });
    whenPressed(QKeySequence::ZoomOut, [this] { tMessage->zoomOut(); });
    whenPressed(Qt::CTRL | Qt::Key_0, [this] { tMessage->showAtNormalSize(); });
}

void frmFrom::layOut() {
    auto* fields = new QGridLayout;
    fields->addWidget(lblFrom, 0, 0);
    fields->addWidget(txtFrom, 0, 1, 1, 2);
    fields->addWidget(lblSubject, 1, 0);
    fields->addWidget(txtSubject, 1, 1, 1, 2);
    fields->addWidget(lblAttachments, 2, 0);
    fields->addWidget(attachmentsField_, 2, 1);
    fields->addWidget(cmdSave, 2, 2);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdReply);
    buttons->addWidget(cmdFwrd);
    buttons->addWidget(CmdPrint);
    buttons->addStretch();
    buttons->addWidget(cmdDone);

    auto* rows = new QVBoxLayout(this);
    rows->addLayout(buttons);
    rows->addLayout(fields);
    rows->addWidget(tMessage, 1);
    rows->addWidget(barFind);

    // Tab goes to the message first, since that is what the user reads first.
    setTabSequence({tMessage, cmdReply, cmdFwrd, CmdPrint, cmdDone, txtFrom, txtSubject, attachmentsField_,
                    cmdSave, barFind->txtFind, barFind->cmdNext, barFind->cmdPrevious});
    resizeToText(116, 38);
}
