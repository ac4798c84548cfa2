#include "windows/frmSetup.h"

#include "windows/setting_hints.h"
#include "windows/wiring.h"

#include <QComboBox>
#include <QCompleter>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace {
/** A combo box whose text can also be typed, since a settings file may hold any text. */
class SettingCombo : public QComboBox {
  public:
    SettingCombo() {
        setEditable(true);
        setInsertPolicy(QComboBox::NoInsert);
        setFocusPolicy(Qt::StrongFocus);
    }

  protected:
    // Without the focus, turning the wheel scrolls the page. It must not change settings under the pointer.
    void wheelEvent(QWheelEvent* event) override {
        if (hasFocus()) {
            QComboBox::wheelEvent(event);
        } else {
            event->ignore();
        }
    }
};

QComboBox* combo(const char* name, const QStringList& items) {
    QComboBox* box = named<SettingCombo>(name);
    box->addItems(items);
    // Otherwise moving through the fields would change a "Yes" from the file to "yes".
    box->completer()->setCaseSensitivity(Qt::CaseSensitive);
    return box;
}

QComboBox* yesNoCombo(const char* name) {
    return combo(name, {QStringLiteral("yes"), QStringLiteral("no")});
}

QComboBox* minutesCombo(const char* name) {
    QStringList items;
    for (int minute = 0; minute <= 60; ++minute) {
        items.append(QString::number(minute));
    }
    QComboBox* box = combo(name, items);
    // The program would not start again with a text that is not a number.
    box->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,4}")), box));
    return box;
}

QFormLayout* addGroup(QVBoxLayout* column, const QString& title) {
    auto* group = new QGroupBox(title);
    auto* form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    column->addWidget(group);
    return form;
}

/** Adds a field with another widget beside it. */
void addRow(QFormLayout* form, const QString& caption, QWidget* field, QWidget* beside) {
    auto* row = new QHBoxLayout;
    row->addWidget(field);
    row->addWidget(beside, 1);
    auto* label = new QLabel(caption);
    label->setBuddy(field);
    form->addRow(label, row);
}

void addSwitch(QFormLayout* form, const QString& caption, QComboBox* box) {
    QLabel* hint = makeHint(box->objectName() + QStringLiteral("Hint"));
    // The hint keeps its room when hidden, so that nothing moves when it appears, and widens no column.
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    policy.setRetainSizeWhenHidden(true);
    hint->setSizePolicy(policy);
    addRow(form, caption, box, hint);
    keepHint(box->lineEdit(), hint, hintOfSwitch);
}

/** Adds a widget that belongs to the field above it. */
void addBelow(QFormLayout* form, QWidget* widget) {
    form->setWidget(form->rowCount(), QFormLayout::FieldRole, widget);
}

/** Aligns the fields of all groups of the page below one another. */
void alignFields(const QWidget& page) {
    int width = 0;
    QList<QLabel*> captions = page.findChildren<QLabel*>();
    captions.removeIf([](const QLabel* label) { return label->buddy() == nullptr; });
    for (const QLabel* caption : std::as_const(captions)) {
        width = std::max(width, caption->sizeHint().width());
    }
    for (QLabel* caption : std::as_const(captions)) {
        caption->setMinimumWidth(width);
        caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
}
} // namespace

frmSetup::frmSetup() : Form(QStringLiteral("frmSetup"), QStringLiteral("Brindlewake Setup")) {
    makeControls();
    layOut();
}

void frmSetup::makeControls() {
    txtPOP = named<QLineEdit>("txtPOP");
    txtSMTP = named<QLineEdit>("txtSMTP");
    txtDomain = named<QLineEdit>("txtDomain");
    txtSchool = named<QLineEdit>("txtSchool");
    cboShowDatabase = yesNoCombo("cboShowDatabase");
    cboAddressIn = combo("cboAddressIn", {QStringLiteral("Personal Address Book"), //
                                          QStringLiteral("Directory Server")});
    connectHandler(cboAddressIn, &QComboBox::currentTextChanged, this, &frmSetup::cboAddressIn_Click);
    txtLDAPServer = named<QLineEdit>("txtLDAPServer");
    txtSearchBase = named<QLineEdit>("txtSearchBase");
    cboShowGetMail = yesNoCombo("cboShowGetMail");
    cboCheckNewMail = minutesCombo("cboCheckNewMail");
    cboPlayWav = yesNoCombo("cboPlayWav");

    cboSetup = yesNoCombo("cboSetup");
    cboPrinter = yesNoCombo("cboPrinter");
    cboSaveCopy = yesNoCombo("cboSaveCopy");
    cboAttachments = yesNoCombo("cboAttachments");
    txtSaveDir = named<QLineEdit>("txtSaveDir");
    cboDrive = named<controls::DriveListBox>("cboDrive");
    // Screen readers take a combo box's text for its name, so its purpose is also its description.
    cboDrive->setAccessibleName(QStringLiteral("Drive of the attachment directory"));
    cboDrive->setAccessibleDescription(cboDrive->accessibleName());
    connectHandler(cboDrive, &QComboBox::currentIndexChanged, this, &frmSetup::cboDrive_Change);
    cboDir = named<controls::DirectoryListBox>("cboDir");
    cboDir->setAccessibleName(QStringLiteral("Folders for the attachment directory"));
    cboDir->setAccessibleDescription(QStringLiteral("Return opens a folder and takes it, Backspace goes up"));
    cboDir->Change = [this] { cboDir_Change(); };
    QObject::connect(cboDir, &QAbstractItemView::activated, this,
                     [this](const QModelIndex& folder) { runHandler([&] { cboDir->open(folder); }); });

    cmdUpdate = named<QPushButton>("cmdUpdate", QStringLiteral("&Update"), this);
    connectHandler(cmdUpdate, &QPushButton::clicked, this, &frmSetup::cmdUpdate_Click);
    cmdExit = named<QPushButton>("cmdExit", QStringLiteral("E&xit"), this);
    connectHandler(cmdExit, &QPushButton::clicked, this, &frmSetup::cmdExit_Click);
}

QWidget* frmSetup::serverColumn() {
    auto* column = new QWidget;
    auto* groups = new QVBoxLayout(column);
    groups->setContentsMargins(0, 0, 0, 0);
    QFormLayout* form = addGroup(groups, QStringLiteral("Institution"));
    form->addRow(QStringLiteral("Institution Name:"), txtSchool);

    form = addGroup(groups, QStringLiteral("Mail server"));
    form->addRow(QStringLiteral("POP Server:"), txtPOP);
    form->addRow(QStringLiteral("SMTP Server:"), txtSMTP);
    form->addRow(QStringLiteral(" Domain Name:"), txtDomain);

    form = addGroup(groups, QStringLiteral("New mail"));
    addSwitch(form, QStringLiteral("Check for New Mail Button:"), cboShowGetMail);
    addRow(form, QStringLiteral("Check for New Mail Every:"), cboCheckNewMail,
           new QLabel(QStringLiteral("Mins")));
    addSwitch(form, QStringLiteral(" Play Wav:"), cboPlayWav);

    form = addGroup(groups, QStringLiteral("Addresses"));
    addSwitch(form, QStringLiteral("Find Address Button:"), cboShowDatabase);
    form->addRow(QStringLiteral("Find Address In:"), cboAddressIn);
    form->addRow(QStringLiteral("LDAP Server:"), txtLDAPServer);
    form->addRow(QStringLiteral("Search Base:"), txtSearchBase);
    groups->addStretch();
    return column;
}

QWidget* frmSetup::programColumn() {
    auto* column = new QWidget;
    auto* groups = new QVBoxLayout(column);
    groups->setContentsMargins(0, 0, 0, 0);
    QFormLayout* form = addGroup(groups, QStringLiteral("Program"));
    addSwitch(form, QStringLiteral("Show Setup Button:"), cboSetup);
    addSwitch(form, QStringLiteral("Printer:"), cboPrinter);
    addSwitch(form, QStringLiteral("Save Copy of Sent Messages:"), cboSaveCopy);

    form = addGroup(groups, QStringLiteral("Attachments"));
    addSwitch(form, QStringLiteral("Send Attachments:"), cboAttachments);
    form->addRow(QStringLiteral("Attachment Directory:"), txtSaveDir);
    saveDirHint_ = makeHint(QStringLiteral("txtSaveDirHint"));
    saveDirHint_->setWordWrap(true);
    QSizePolicy policy = saveDirHint_->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Expanding);
    saveDirHint_->setSizePolicy(policy);
    addBelow(form, saveDirHint_);
    keepHint(txtSaveDir, saveDirHint_, hintOfAttachmentDirectory);
    addBelow(form, cboDrive);
    addBelow(form, cboDir);
    addBelow(form, new QLabel(QStringLiteral("Double-click a folder to choose it.")));
    cboDrive->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    cboDir->setMinimumHeight(9 * cboDir->fontMetrics().lineSpacing());
    groups->setStretch(1, 1);
    return column;
}

void frmSetup::layOut() {
    auto* page = new QWidget;
    QWidget* left = serverColumn();
    QWidget* right = programColumn();
    columns_ = new QBoxLayout(QBoxLayout::LeftToRight, page);
    columns_->addWidget(left, 1);
    columns_->addWidget(right, 1);
    alignFields(*page);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdUpdate);
    buttons->addWidget(cmdExit);

    // The page scrolls on a small screen or with large letters.
    auto* scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(scroll, 1);
    rows->addLayout(buttons);
    keepHintInView(*scroll);

    const QMargins margins = rows->contentsMargins() + columns_->contentsMargins();
    widthOfTwoColumns_ = 2 * std::max(left->sizeHint().width(), right->sizeHint().width()) +
                         columns_->spacing() + margins.left() + margins.right() +
                         scroll->verticalScrollBar()->sizeHint().width();
    for (const QLabel* caption : findChildren<QLabel*>()) {
        // The text field inside a combo box has the focus, so screen readers tell that field's name.
        if (const auto* box = qobject_cast<QComboBox*>(caption->buddy());
            box != nullptr && box->isEditable()) {
            box->lineEdit()->setAccessibleName(caption->text().trimmed());
        }
    }
    setTabSequence({txtSchool,       txtPOP,     txtSMTP,         txtDomain,    cboShowGetMail,
                    cboCheckNewMail, cboPlayWav, cboShowDatabase, cboAddressIn, txtLDAPServer,
                    txtSearchBase,   cboSetup,   cboPrinter,      cboSaveCopy,  cboAttachments,
                    txtSaveDir,      cboDrive,   cboDir,          cmdUpdate,    cmdExit});
    txtSchool->setFocus();
    closeOnEscape();
    resizeToText(140, 44);
    // Where the screen has room, the user need not scroll.
    if (widthOfTwoColumns_ <= screen()->availableSize().width() * 9 / 10) {
        resize(std::max(width(), widthOfTwoColumns_), height());
    }
}

// Scrolls to a hint that appears below the edge of a small window, where the user would not see it.
void frmSetup::keepHintInView(QScrollArea& scroll) {
    QObject::connect(txtSaveDir, &QLineEdit::textChanged, &scroll, [this, &scroll] {
        if (txtSaveDir->hasFocus() && saveDirHint_->isVisible()) {
            // The hint has its place only after the group's layout is activated, which Qt would do later.
            saveDirHint_->parentWidget()->layout()->activate();
            scroll.ensureWidgetVisible(saveDirHint_);
        }
    });
}

void frmSetup::resizeEvent(QResizeEvent* event) {
    columns_->setDirection(width() < widthOfTwoColumns_ ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    Form::resizeEvent(event);
}
