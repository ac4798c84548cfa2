#include "windows/frmSend.h"

#include "components/controls/line_box.h"
#include "windows/wiring.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>

frmSend::frmSend() : Form(QStringLiteral("frmSend"), QStringLiteral("Brindlewake")) {
    lblTo = named<QLabel>("lblTo", QStringLiteral("&To:"), this);
    tTo = named<controls::LineBox>("tTo", this);
    lblTo->setBuddy(tTo);
    cmdSendto = named<QPushButton>("cmdSendto", QStringLiteral("Find Address"), this);
    cmdSendto->setAccessibleDescription(QStringLiteral("Finds an address to send to"));

    lblCc = named<QLabel>("lblCc", QStringLiteral("C&c:"), this);
    tCc = named<controls::LineBox>("tCc", this);
    lblCc->setBuddy(tCc);
    cmdCCto = named<QPushButton>("cmdCCto", QStringLiteral("Find Address"), this);
    cmdCCto->setAccessibleDescription(QStringLiteral("Finds an address to send a copy to"));

    lblSubject = named<QLabel>("lblSubject", QStringLiteral("S&ubject:"), this);
    tSubject = named<controls::LineBox>("tSubject", this);
    lblSubject->setBuddy(tSubject);

    tMessage = named<controls::TextBox>("tMessage", this);
    tMessage->setAccessibleName(QStringLiteral("Message"));
    tMessage->setTabChangesFocus(true);

    lblAttachment = named<QLabel>("lblAttachment", QStringLiteral("Attac&hment:"), this);
    txtAttachment = named<QLineEdit>("txtAttachment", this);
    lblAttachment->setBuddy(txtAttachment);
    cmdAttach = named<QPushButton>("cmdAttach", QStringLiteral("&Attach..."), this);

    lblSending = named<QLabel>("lblSending", this);
    cmdSndit = named<QPushButton>("cmdSndit", QStringLiteral("&Send"), this);
    cmdCancel = named<QPushButton>("cmdCancel", QStringLiteral("Cance&l"), this);
    connectHandler(cmdCancel, &QPushButton::clicked, this, &frmSend::cmdCancel_Click);

    connectHandler(cmdAttach, &QPushButton::clicked, this, &frmSend::cmdAttach_Click);
    connectHandler(cmdSendto, &QPushButton::clicked, this, &frmSend::cmdSendto_Click);
    connectHandler(cmdCCto, &QPushButton::clicked, this, &frmSend::cmdCCto_Click);
    connectHandler(cmdSndit, &QPushButton::clicked, this, &frmSend::cmdSndit_Click);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        QObject::connect(shortcut, &QShortcut::activated, cmdSndit, &QPushButton::click);
    }
    barSending = named<MSComctlLib::ProgressBar>("barSending", this);
    barSending->setAccessibleName(QStringLiteral("Progress"));

    tmrKeepLetter = named<controls::Timer>("tmrKeepLetter", this);
    connectHandler(tmrKeepLetter, &QTimer::timeout, this, &frmSend::tmrKeepLetter_Timer);
    for (QLineEdit* field : {tTo, tCc, tSubject, txtAttachment}) {
        connectHandler(field, &QLineEdit::textChanged, this, &frmSend::letter_Change);
    }
    connectHandler(tMessage, &QPlainTextEdit::textChanged, this, &frmSend::letter_Change);

    // The SMTP client calls these during its requests.
    SMTP1.PITrail = [this](smtplib::Direction direction, const std::string& message) {
        SMTP1_PITrail(direction, message);
    };
    SMTP1.Protected = [this](const transport::Protection& protection) { SMTP1_Protected(protection); };
    SMTP1.Progress = [this](std::int64_t done, std::int64_t total) { SMTP1_Progress(done, total); };
    layOut();
}

void frmSend::layOut() {
    fields_ = new QGridLayout;
    fields_->addWidget(lblTo, 0, 0);
    fields_->addWidget(tTo, 0, 1);
    fields_->addWidget(cmdSendto, 0, 2);
    fields_->addWidget(lblCc, 1, 0);
    fields_->addWidget(tCc, 1, 1);
    fields_->addWidget(cmdCCto, 1, 2);
    fields_->addWidget(lblSubject, 2, 0);
    fields_->addWidget(tSubject, 2, 1, 1, 2);
    fields_->addWidget(lblAttachment, 3, 0);
    fields_->addWidget(txtAttachment, 3, 1);
    fields_->addWidget(cmdAttach, 3, 2);

    auto* foot = new QHBoxLayout;
    foot->addWidget(lblSending);
    foot->addWidget(barSending, 1);
    foot->addWidget(cmdSndit);
    foot->addWidget(cmdCancel);

    auto* rows = new QVBoxLayout(this);
    rows->addLayout(fields_);
    rows->addWidget(tMessage, 1);
    rows->addLayout(foot);

    setTabSequence(
        {tTo, cmdSendto, tCc, cmdCCto, tSubject, txtAttachment, cmdAttach, tMessage, cmdSndit, cmdCancel});
    resizeToText(116, 32);
}

void frmSend::showFindAddress(bool shown) {
    const int columns = shown ? 1 : 2;
    for (QLineEdit* field : {tTo, tCc}) {
        fields_->removeWidget(field);
        fields_->addWidget(field, field == tTo ? 0 : 1, 1, 1, columns);
    }
    cmdSendto->setVisible(shown);
    cmdCCto->setVisible(shown);
}
