#include "mailbox/mailbox_list.h"

#include "email/mailbox.h"
#include "platform/text.h"
#include "windows/frmMain.h"
#include "windows/windows.h"

#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <string_view>

namespace {
constexpr int kNumberCharacters = 15;
constexpr int kFromCharacters = 50;
constexpr int kSubjectCharacters = 48;
/** Bytes of a date that are shown. Nothing else limits its length, and each repaint lays the cell out again.
 */
constexpr std::size_t kDateBytes = 300;
/** Bytes of a sender or a subject that are decoded: 80 for each character that the cell shows. */
constexpr std::size_t kNameBytes = 4'000;

/** Returns the trimmed text of a header field. It is limited, since a sender can make one of megabytes. */
QString shownText(std::string_view value, std::size_t mostBytes) {
    // All of these are shown as spaces.
    constexpr std::string_view spaces = " \t\r\n";
    const std::size_t start = std::min(value.find_first_not_of(spaces), value.size());
    value.remove_prefix(start);
    value = value.substr(0, value.find_last_not_of(spaces) + 1);
    return platform::withControlsVisible(platform::startFromBytes(value, mostBytes));
}
} // namespace

void UpdateListControls() {
    frmMain& main = mainWindow();
    // The caller may have switched redrawing off to write rows.
    main.MailGrid->setRedraw(true);
    if (email::mailbox.MessageCount != 0) {
        main.MailGrid->setHighLight(1);
        main.MailGrid->setEnabled(true);
        main.cmdDelete->setEnabled(true);
        main.cmdRead->setEnabled(true);
    } else {
        main.cmdDelete->setEnabled(false);
        main.cmdRead->setEnabled(false);
        main.MailGrid->setEnabled(false);
        main.MailGrid->setHighLight(0);
    }
}

void ResetMailList() {
    email::mailbox.MailboxBytes = 0;
    email::mailbox.MessageCount = 0;
    email::mailbox.LastMessageCount = 0;
    MSFlexGridLib::MSFlexGrid* const grid = mainWindow().MailGrid;
    grid->setRows(2);
    grid->Clear();
    grid->chooseNone();
    writeTitles();
    UpdateListControls();
    showTotals();
}

QString totalsText() {
    return QString::number(email::mailbox.MessageCount) + QStringLiteral(" messages ") +
           QString::number(email::mailbox.MailboxBytes) + QStringLiteral(" bytes total");
}

void showTotals() {
    QLabel* const line = mainWindow().lStats;
    line->setText(QString());
    line->setText(totalsText());
}

void writeTitles() {
    int column = 0;
    for (const char* title : {"Num", "Date", "From", "Subject", "Bytes"}) {
        mainWindow().MailGrid->setTextMatrix(0, column++, QLatin1String(title));
    }
}

std::array<QString, 5> rowTexts(std::int16_t number, const email::MessageSummary& summary) {
    return {platform::fitted(QString::number(number), kNumberCharacters), shownText(summary.Date, kDateBytes),
            platform::fitted(shownText(summary.From, kNameBytes), kFromCharacters),
            platform::fitted(shownText(summary.Subject, kNameBytes), kSubjectCharacters),
            u'(' + QString::number(summary.Size) + QStringLiteral(" bytes)")};
}

void writeRow(std::int16_t number, const email::MessageSummary& summary) {
    int column = 0;
    for (const QString& text : rowTexts(number, summary)) {
        mainWindow().MailGrid->setTextMatrix(number, column++, text);
    }
}

void frmMain::MailGrid_Click() {
    const QString number = MailGrid->TextMatrix(MailGrid->Row(), 0);
    // A row without a number stands for a message that is not fetched yet.
    if (!number.trimmed().isEmpty()) {
        SelectedMessage = platform::toInteger16(number);
    }
}

// Read opens the compose window, as Compose Mail does. A double click on a message's row opens the message.
void frmMain::cmdRead_Click() {
    cmdCmpose_Click();
}
