#include "addresses/source_in_use.h"
#include "addresses/written_address.h"
#include "components/controls/announcement.h"
#include "components/controls/line_box.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "windows/frmFind.h"
#include "windows/frmSend.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {
constexpr int kPauseInTypingMs = 250;

/** What the line says of a search that has come to its end. */
QString resultOf(const addresses::FoundAddresses& outcome, const QString& typed) {
    QString text = QString::number(outcome.found.size()) + QStringLiteral(" found");
    if (outcome.found.empty()) {
        // A directory tells nobody of all its people.
        text = typed.trimmed().isEmpty() ? QStringLiteral("Please type some letters")
                                         : QStringLiteral("Nobody found");
    } else if (outcome.more) {
        text = QStringLiteral("More than %1 found: please type more letters").arg(outcome.found.size());
    }
    const QString trouble = platform::fromBytes(outcome.trouble);
    return trouble.isEmpty() ? text : text + QStringLiteral(". ") + trouble;
}

/** What stands between the text of a list of addresses and the next one. */
QString separatorBehind(const QString& list) {
    const QString text = list.trimmed();
    if (text.isEmpty()) {
        return {};
    }
    return text.endsWith(u',') ? QStringLiteral(" ") : QStringLiteral(", ");
}
} // namespace

void frmSend::cmdSendto_Click() {
    finding_ = &findWindow();
    findWindow().openFor(*this, *tTo, QStringLiteral("To"));
}

void frmSend::cmdCCto_Click() {
    finding_ = &findWindow();
    findWindow().openFor(*this, *tCc, QStringLiteral("Cc"));
}

void frmSend::closeFinding() {
    if (finding_ && finding_->isVisible()) {
        unload(*finding_);
    }
}

void frmFind::Form_Load() {
    takeProgramTitle();
    int column = 0;
    for (const char* title : {"Name", "Address", "Found in"}) {
        lstFound->setTextMatrix(0, column++, QLatin1String(title));
    }
    lstFound->setRows(1);
    cmdUse->setEnabled(false);
    tmrFind->setPeriod(kPauseInTypingMs);
}

void frmFind::openFor(Form& opener, QLineEdit& field, const QString& fieldName) {
    if (isVisible()) {
        bringUp();
        return;
    }
    field_ = &field;
    fieldName_ = fieldName;
    // The opener gives the keyboard back to what had it before it was disabled.
    field.setFocus();
    takeControlFrom(opener);
    bringUp();
    txtFind->setFocus();
    search();
}

void frmFind::Form_Unload() {
    giveUp();
    giveControlBack();
    if (field_) {
        field_->setFocus();
        field_->end(false);
    }
}

void frmFind::cmdClose_Click() {
    unload(*this);
}

// Nobody of the rows that are still shown is marked or can be: they are the answer to another text.
void frmFind::txtFind_Change() {
    giveUp();
    lstFound->setHighLight(0);
    tmrFind->setEnabled(true);
    lblFinding->setText(QStringLiteral("Searching..."));
}

void frmFind::tmrFind_Timer() {
    search();
}

void frmFind::txtFind_Return() {
    if (lstFound->Row() > 0) {
        cmdUse_Click();
        txtFind->selectAll();
    } else if (!searching_) {
        search();
    }
}

void frmFind::lstFound_Select() {
    cmdUse->setEnabled(lstFound->Row() > 0);
}

void frmFind::giveUp() {
    tmrFind->setEnabled(false);
    searching_ = false;
    if (source_) {
        source_->giveUp();
    }
}

void frmFind::search() {
    tmrFind->setEnabled(false);
    searching_ = true;
    lblFinding->setText(QStringLiteral("Searching..."));
    const auto whenFound = [this](const addresses::FoundAddresses& outcome) {
        runHandler([this, &outcome] { show(outcome); });
    };
    const int error = platform::errorNumberOf([&] {
        if (!source_) {
            source_ = addresses::makeSourceInUse();
        }
        source_->search(platform::toBytes(platform::withoutHalfPairs(txtFind->text())), whenFound);
    });
    if (error != 0) {
        searching_ = false;
        tell(QStringLiteral("The addresses cannot be looked up. Error# ") + QString::number(error));
    }
}

void frmFind::show(const addresses::FoundAddresses& outcome) {
    searching_ = false;
    found_ = outcome.found;
    lstFound->setRows(static_cast<int>(found_.size()) + 1);
    int row = 0;
    for (const addresses::FoundAddress& found : found_) {
        ++row;
        int column = 0;
        for (const std::string* text : {&found.name, &found.address, &found.source}) {
            lstFound->setTextMatrix(row, column++, platform::fromBytes(*text));
        }
    }
    lstFound->setHighLight(1);
    if (row > 0) {
        lstFound->setCurrentCell(0, 0);
        lstFound->scrollToTop();
    }
    tell(resultOf(outcome, txtFind->text()));
}

void frmFind::cmdUse_Click() {
    const int row = lstFound->Row();
    if (row > 0 && field_) {
        // A copy: what happens next may begin another search.
        take(addresses::FoundAddress(found_.at(static_cast<std::size_t>(row) - 1)));
    }
}

void frmFind::take(const addresses::FoundAddress& found) {
    const QString list = field_->text();
    const QString who = platform::fromBytes(found.name.empty() ? found.address : found.name);
    if (addresses::hasAddress(platform::toBytes(list), found.address)) {
        tell(QStringLiteral("%1 stands in %2 already").arg(who, fieldName_));
        return;
    }
    const QString more = separatorBehind(list) + platform::fromBytes(addresses::writtenAddress(found));
    if (list.size() + more.size() > controls::LineBox::kMostCharacters) {
        tell(QStringLiteral("%1 has no room for more addresses").arg(fieldName_));
        return;
    }
    // Inserted behind a caret that has moved, it can be undone without what was typed before.
    field_->home(false);
    field_->end(false);
    field_->insert(more);
    tell(QStringLiteral("%1 stands in %2 now").arg(who, fieldName_));
}

void frmFind::tell(const QString& text) {
    lblFinding->setText(text);
    annFound->tell(text);
}

void frmFind::tellMarkedRow() {
    const int row = lstFound->Row();
    if (row > 0) {
        const addresses::FoundAddress& found = found_.at(static_cast<std::size_t>(row) - 1);
        annFound->tell(platform::fromBytes(addresses::writtenAddress(found)));
    }
}
