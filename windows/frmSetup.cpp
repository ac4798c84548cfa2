#include "windows/frmSetup.h"

#include "windows/wiring.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>

namespace {
/** A combo box whose value is its text, which may also be typed: settings files hold what people write. */
QComboBox* combo(const char* name, const QStringList& items) {
    auto* box = named<QComboBox>(name);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->addItems(items);
    return box;
}

QComboBox* yesNoCombo(const char* name) {
    return combo(name, {QStringLiteral("yes"), QStringLiteral("no")});
}

QStringList minutes() {
    QStringList items;
    for (int minute = 0; minute <= 60; ++minute) {
        items.append(QString::number(minute));
    }
    return items;
}

QFormLayout* addGroup(QVBoxLayout* rows, const QString& title) {
    auto* group = new QGroupBox(title);
    auto* form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    rows->addWidget(group);
    return form;
}
} // namespace

frmSetup::frmSetup() : Form(QStringLiteral("frmSetup"), QStringLiteral("Brindlewake Setup")) {
    auto* page = new QWidget;
    auto* groups = new QVBoxLayout(page);

    QFormLayout* form = addGroup(groups, QStringLiteral("Mail server"));
    form->addRow(QStringLiteral("POP Server:"), txtPOP = named<QLineEdit>("txtPOP"));
    form->addRow(QStringLiteral("SMTP Server:"), txtSMTP = named<QLineEdit>("txtSMTP"));
    form->addRow(QStringLiteral(" Domain Name:"), txtDomain = named<QLineEdit>("txtDomain"));

    form = addGroup(groups, QStringLiteral("Institution"));
    form->addRow(QStringLiteral("Institution Name:"), txtSchool = named<QLineEdit>("txtSchool"));

    form = addGroup(groups, QStringLiteral("Application"));
    form->addRow(QStringLiteral("Show Setup Button:"), cboSetup = yesNoCombo("cboSetup"));
    form->addRow(QStringLiteral(" Play Wav:"), cboPlayWav = yesNoCombo("cboPlayWav"));
    form->addRow(QStringLiteral("Send Attachments:"), cboAttachments = yesNoCombo("cboAttachments"));
    form->addRow(QStringLiteral("Attachment Directory:"), txtSaveDir = named<QLineEdit>("txtSaveDir"));
    form->addRow(QStringLiteral("Printer:"), cboPrinter = yesNoCombo("cboPrinter"));
    form->addRow(QStringLiteral("Save Copy of Sent Messages:"), cboSaveCopy = yesNoCombo("cboSaveCopy"));
    form->addRow(QStringLiteral("Check for New Mail Button:"), cboShowGetMail = yesNoCombo("cboShowGetMail"));
    auto* interval = new QHBoxLayout;
    interval->addWidget(cboCheckNewMail = combo("cboCheckNewMail", minutes()));
    interval->addWidget(new QLabel(QStringLiteral("Mins")));
    auto* intervalLabel = new QLabel(QStringLiteral("Check for New Mail Every:"));
    intervalLabel->setBuddy(cboCheckNewMail);
    form->addRow(intervalLabel, interval);

    form = addGroup(groups, QStringLiteral("Addresses"));
    form->addRow(QStringLiteral("Find Address Button:"), cboShowDatabase = yesNoCombo("cboShowDatabase"));
    form->addRow(QStringLiteral("Find Address In:"),
                 cboAddressIn = combo("cboAddressIn", {QStringLiteral("Personal Address Book"),
                                                       QStringLiteral("Directory Server")}));
    connectHandler(cboAddressIn, &QComboBox::currentTextChanged, this, &frmSetup::cboAddressIn_Click);
    form->addRow(QStringLiteral("LDAP Server:"), txtLDAPServer = named<QLineEdit>("txtLDAPServer"));
    form->addRow(QStringLiteral("Search Base:"), txtSearchBase = named<QLineEdit>("txtSearchBase"));

    cmdUpdate = named<QPushButton>("cmdUpdate", QStringLiteral("&Update"), this);
    connectHandler(cmdUpdate, &QPushButton::clicked, this, &frmSetup::cmdUpdate_Click);
    cmdExit = named<QPushButton>("cmdExit", QStringLiteral("E&xit"), this);
    connectHandler(cmdExit, &QPushButton::clicked, this, &frmSetup::cmdExit_Click);

    // All of it fits a large screen; on a small one, or enlarged, it scrolls.
    auto* scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdUpdate);
    buttons->addWidget(cmdExit);
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(scroll, 1);
    rows->addLayout(buttons);
    resizeToText(80, 48);
}
