#include "email/credentials.h"
#include "email/mailbox.h"
#include "email/shared_settings.h"
#include "mailbox/mailbox_list.h"
#include "platform/runtime_error.h"
#include "tests/support/window_test.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QToolTip>

#include <algorithm>

using support::WindowTest;
using testing::ElementsAre;

namespace {
class MailboxList : public WindowTest {
  protected:
    MailboxList() {
        writeSettings(support::schoolSettings(QStringLiteral("pop.example.org")));
        startUp();
        mainWindow().bringUp();
    }

    static void fill(std::int16_t messages) {
        email::mailbox.MessageCount = messages;
        mainWindow().MailGrid->setRows(messages + 1);
        for (std::int16_t number = 1; number <= messages; ++number) {
            writeRow(number, email::mailbox.Messages.at(number));
        }
        UpdateListControls();
    }

    static void click(int row) {
        auto& grid = *mainWindow().MailGrid;
        const QRect cell = grid.visualRect(grid.model()->index(row - 1, 1));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, cell.center());
    }
};

email::MessageSummary summaryOf(const std::string& from, const std::string& subject, const std::string& date,
                                std::int32_t size) {
    email::MessageSummary summary;
    summary.From = from;
    summary.Subject = subject;
    summary.Date = date;
    summary.Size = size;
    return summary;
}

/** Counts how often a widget is painted. */
class CountedPaintings : public QObject {
  public:
    explicit CountedPaintings(QWidget& widget) { widget.installEventFilter(this); }

    int count() const { return count_; }

  protected:
    bool eventFilter(QObject* /*receiver*/, QEvent* event) override {
        count_ += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

  private:
    int count_ = 0;
};
} // namespace

TEST_F(MailboxList, WithoutMessagesHasOneSpaceRowDisabledButtonsAndZeroTotals) {
    ResetMailList();
    const auto& main = mainWindow();
    EXPECT_EQ(main.MailGrid->Rows(), 2);
    for (int column = 0; column < 5; ++column) {
        EXPECT_EQ(main.MailGrid->TextMatrix(1, column), QString());
    }
    EXPECT_EQ(main.MailGrid->TextMatrix(0, 0), QStringLiteral("Num"));
    EXPECT_EQ(main.MailGrid->TextMatrix(0, 4), QStringLiteral("Bytes"));
    EXPECT_FALSE(main.cmdRead->isEnabled());
    EXPECT_FALSE(main.cmdDelete->isEnabled());
    EXPECT_FALSE(main.MailGrid->isEnabled());
    EXPECT_EQ(main.lStats->text(), QStringLiteral("0 messages 0 bytes total"));
}

TEST_F(MailboxList, ResetForgetsWhatWasListed) {
    fill(3);
    email::mailbox.MailboxBytes = 300;
    email::mailbox.LastMessageCount = 3;
    ResetMailList();
    EXPECT_EQ(email::mailbox.MessageCount, 0);
    EXPECT_EQ(email::mailbox.LastMessageCount, 0);
    EXPECT_EQ(email::mailbox.MailboxBytes, 0);
    EXPECT_EQ(mainWindow().MailGrid->Rows(), 2);
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(1, 0), QString());
}

TEST_F(MailboxList, ReadWithARowSelectedOpensAnEmptyComposeWindowAndNotTheMessage) {
    fill(2);
    click(2);
    mainWindow().cmdRead->click();
    EXPECT_TRUE(composeWindow().isVisible());
    EXPECT_FALSE(mainWindow().isEnabled());
    EXPECT_EQ(composeWindow().tTo->text(), QString());
    EXPECT_EQ(composeWindow().tCc->text(), QString());
    EXPECT_EQ(composeWindow().tMessage->toPlainText(), QString());
}

TEST_F(MailboxList, ReadWithSaveCopyOpensTheComposeWindowWithTheSenderInCc) {
    email::settings.SaveCopy = QStringLiteral("yes");
    email::credentials.UserName = QStringLiteral("ann");
    fill(1);
    mainWindow().cmdRead->click();
    EXPECT_EQ(composeWindow().tCc->text(), QStringLiteral("ann@example.org"));
}

TEST_F(MailboxList, ControlsFollowTheListFromEmptyToFilledAndBack) {
    auto& main = mainWindow();
    email::mailbox.MessageCount = 1;
    UpdateListControls();
    EXPECT_TRUE(main.cmdRead->isEnabled());
    EXPECT_TRUE(main.cmdDelete->isEnabled());
    EXPECT_TRUE(main.MailGrid->isEnabled());
    EXPECT_EQ(main.MailGrid->selectionMode(), QAbstractItemView::SingleSelection);
    email::mailbox.MessageCount = 0;
    UpdateListControls();
    EXPECT_FALSE(main.cmdRead->isEnabled());
    EXPECT_FALSE(main.cmdDelete->isEnabled());
    EXPECT_FALSE(main.MailGrid->isEnabled());
    EXPECT_EQ(main.MailGrid->selectionMode(), QAbstractItemView::NoSelection);
}

TEST_F(MailboxList, UpdatingTheControlsTouchesNeitherRowsNorSummaryLine) {
    fill(2);
    mainWindow().lStats->setText(QStringLiteral("anything"));
    const QString cell = mainWindow().MailGrid->TextMatrix(2, 0);
    UpdateListControls();
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("anything"));
    EXPECT_EQ(mainWindow().MailGrid->TextMatrix(2, 0), cell);
}

TEST_F(MailboxList, ClickingRowThreeSelectsTheNumberThatItsFirstCellHolds) {
    fill(4);
    click(3);
    EXPECT_EQ(mainWindow().SelectedMessage, 3);
    mainWindow().MailGrid->setTextMatrix(3, 0, QStringLiteral("7"));
    click(3);
    EXPECT_EQ(mainWindow().SelectedMessage, 7);
}

TEST_F(MailboxList, TheSelectedMessageStaysWhenTheListChanges) {
    fill(4);
    click(3);
    ResetMailList();
    EXPECT_EQ(mainWindow().SelectedMessage, 3);
}

TEST_F(MailboxList, TotalsHaveNoGroupingAndOnePlural) {
    email::mailbox.MessageCount = 1;
    email::mailbox.MailboxBytes = 120345;
    showTotals();
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("1 messages 120345 bytes total"));
    email::mailbox.MessageCount = 3;
    email::mailbox.MailboxBytes = 10452;
    showTotals();
    EXPECT_EQ(mainWindow().lStats->text(), QStringLiteral("3 messages 10452 bytes total"));
}

TEST_F(MailboxList, ARowHasFixedWidths) {
    const auto texts =
        rowTexts(12, summaryOf(" Ann <ann@example.org> ", std::string(60, 's'), "  today ", 345));
    EXPECT_EQ(texts[0], QStringLiteral("12") + QString(13, u' '));
    EXPECT_EQ(texts[1], QStringLiteral("today"));
    EXPECT_EQ(texts[2], QStringLiteral("Ann <ann@example.org>") + QString(29, u' '));
    EXPECT_EQ(texts[3], QString(48, u's'));
    EXPECT_EQ(texts[4], QStringLiteral("(345 bytes)"));
}

TEST_F(MailboxList, AWidthCountsCharactersAndCutsNoneInTwo) {
    const std::string face = "\xF0\x9F\x98\x80"; // one character outside the first plane
    std::string subject;
    for (int i = 0; i < 60; ++i) {
        subject += face;
    }
    const auto texts = rowTexts(1, summaryOf("", subject, "", 0));
    EXPECT_EQ(texts[3].toStdString().size(), 48 * face.size());
}

TEST_F(MailboxList, AStrangersControlCharactersAreShownAndNotObeyed) {
    const auto texts = rowTexts(1, summaryOf("a\x1b[31m\xE2\x80\xAE"
                                             "gro.live",
                                             "one\ttwo\nthree", "", 0));
    EXPECT_TRUE(texts[2].startsWith(QStringLiteral(u"a\u241B[31m<202E>gro.live"))) << texts[2].toStdString();
    EXPECT_TRUE(texts[3].startsWith(QStringLiteral("one two three")));
}

TEST_F(MailboxList, ARowOfMegabytesHoldsNoMoreThanOneOfWords) {
    const std::string megabytes(4'000'000, 'd');
    const auto texts = rowTexts(1, summaryOf(megabytes, megabytes, ' ' + megabytes, 0));
    EXPECT_EQ(texts[1].toStdString(), megabytes.substr(0, 300) + " [...]");
    EXPECT_EQ(texts[2].toStdString(), megabytes.substr(0, 50));
    EXPECT_EQ(texts[3].toStdString(), megabytes.substr(0, 48));
    // A letter with a million combining marks counts as one character; only its first bytes are shown.
    std::string marks = "a";
    while (marks.size() < 1'000'000) {
        marks += "\xcc\x81";
    }
    EXPECT_LT(rowTexts(1, summaryOf(marks, marks, marks, 0))[2].size(), 2'100);
}

TEST_F(MailboxList, WhatIsTrimmedCountsForNothing) {
    const std::string spaces(1'000'000, ' ');
    const auto texts = rowTexts(1, summaryOf("\t" + spaces + "Ann\r\n", spaces, spaces + "today", 0));
    EXPECT_EQ(texts[1], QStringLiteral("today"));
    EXPECT_EQ(texts[2], QStringLiteral("Ann") + QString(47, u' '));
    EXPECT_EQ(texts[3], QString(48, u' '));
}

TEST_F(MailboxList, TheGridIsATableForScreenReaders) {
    fill(2);
    QAccessibleInterface* grid = QAccessible::queryAccessibleInterface(mainWindow().MailGrid);
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->role(), QAccessible::Table);
    ASSERT_NE(grid->tableInterface(), nullptr);
    EXPECT_EQ(grid->tableInterface()->rowCount(), 2);
    EXPECT_EQ(grid->tableInterface()->columnDescription(2), QStringLiteral("From"));
}

TEST_F(MailboxList, CellsOutsideTheGridAreSubscriptErrors) {
    auto& grid = *mainWindow().MailGrid;
    EXPECT_EQ(platform::errorNumberOf([&] { grid.setTextMatrix(2, 0, {}); }), 9);
    EXPECT_EQ(platform::errorNumberOf([&] { grid.TextMatrix(0, 5); }), 9);
    EXPECT_EQ(platform::errorNumberOf([&] { grid.RemoveItem(0); }), 9);
}

TEST_F(MailboxList, AClickOnARowThatStillWaitsForItsMessageChangesNothing) {
    fill(1);
    click(1);
    mainWindow().MailGrid->setRows(3);
    click(2);
    EXPECT_THAT(boxTexts(), ElementsAre());
    EXPECT_EQ(mainWindow().SelectedMessage, 1);
}

TEST_F(MailboxList, WhileNothingIsRedrawnTheListShowsWhatItShowedBefore) {
    email::mailbox.Messages.at(1) = summaryOf("ann@example.org", "old", "today", 10);
    fill(1);
    auto* const view = mainWindow().MailGrid->viewport();
    const QImage before = view->grab().toImage();
    mainWindow().MailGrid->setRedraw(false);
    mainWindow().MailGrid->setTextMatrix(1, 3, QStringLiteral("a new subject"));
    EXPECT_EQ(view->grab().toImage(), before);
    mainWindow().MailGrid->setRedraw(true);
    EXPECT_NE(view->grab().toImage(), before);
}

TEST_F(MailboxList, WhileNothingIsRedrawnWrittenRowsAskForNoPicture) {
    fill(1);
    auto* const grid = mainWindow().MailGrid;
    grid->setRedraw(false);
    QCoreApplication::processEvents();
    const CountedPaintings paintings(*grid->viewport());
    grid->setTextMatrix(1, 3, QStringLiteral("another subject"));
    QCoreApplication::processEvents();
    EXPECT_EQ(paintings.count(), 0);
    grid->setRedraw(true);
    QCoreApplication::processEvents();
    EXPECT_GT(paintings.count(), 0);
}

TEST_F(MailboxList, ACellsTipHasItsWholeTextWithoutTheSpacesThatPadIt) {
    email::mailbox.Messages.at(1) = summaryOf("ann@example.org", "a < b", "today", 10);
    fill(1);
    auto* const grid = mainWindow().MailGrid;
    EXPECT_EQ(grid->item(0, 3)->toolTip(), QStringLiteral("<p>a &lt; b</p>"));
    grid->setTextMatrix(1, 3, QStringLiteral("another subject   "));
    EXPECT_EQ(grid->item(0, 3)->toolTip(), QStringLiteral("<p>another subject</p>"));
}

TEST_F(MailboxList, AListThatIsFirstShownWhileNothingIsRedrawnIsSpaceNotBlack) {
    mainWindow().hide();
    mainWindow().MailGrid->setRedraw(false);
    mainWindow().show();
    auto* const view = mainWindow().MailGrid->viewport();
    const QImage picture = view->grab().toImage();
    EXPECT_EQ(picture.pixelColor(picture.rect().center()),
              mainWindow().MailGrid->palette().color(QPalette::Base));
}

namespace {
/** Rests the mouse pointer on a cell and returns the tool tip that appears. */
QString tipAt(int row, int column) {
    auto* const view = mainWindow().MailGrid->viewport();
    const QPoint place =
        mainWindow().MailGrid->visualItemRect(mainWindow().MailGrid->item(row - 1, column)).center();
    QHelpEvent resting(QEvent::ToolTip, place, view->mapToGlobal(place));
    QCoreApplication::sendEvent(view, &resting);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
}
} // namespace

TEST_F(MailboxList, OnlyATextThatIsCutHasATip) {
    email::mailbox.Messages.at(1) = summaryOf("ann@example.org", std::string(48, 'w'), "today", 10);
    fill(1);
    mainWindow().MailGrid->setColWidth(3, 100);
    EXPECT_EQ(tipAt(1, 1), QString());
    EXPECT_EQ(tipAt(1, 3), QStringLiteral("<p>") + QString(48, u'w') + QStringLiteral("</p>"));
}

TEST_F(MailboxList, NoStripIsLeftBesideTheColumnsWhenTheWindowGrows) {
    fill(3);
    auto& main = mainWindow();
    main.resize(main.width() + 300, main.height());
    QCoreApplication::processEvents();
    click(3);
    auto& grid = *main.MailGrid;
    const QImage picture = grid.viewport()->grab().toImage();
    const auto colourAtTheEdge = [&](int row) {
        const int middle = grid.rowViewportPosition(row - 1) + grid.rowHeight(row - 1) / 2;
        return picture.pixelColor(picture.width() - 5, middle);
    };
    EXPECT_EQ(colourAtTheEdge(2), grid.palette().color(QPalette::AlternateBase));
    EXPECT_EQ(colourAtTheEdge(3), grid.palette().color(QPalette::Active, QPalette::Highlight));
}

TEST_F(MailboxList, TheChosenRowIsMarkedAsWellInAWindowWithoutTheKeyboard) {
    fill(2);
    click(2);
    auto& grid = *mainWindow().MailGrid;
    QPalette palette = grid.palette();
    palette.setColor(QPalette::Inactive, QPalette::Highlight, palette.color(QPalette::Base));
    grid.setPalette(palette);
    composeWindow().show();
    composeWindow().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&composeWindow()));
    const QImage picture = grid.viewport()->grab().toImage();
    const QRect cell = grid.visualItemRect(grid.item(1, 2));
    EXPECT_EQ(picture.pixelColor(cell.right() - 5, cell.center().y()),
              palette.color(QPalette::Active, QPalette::Highlight));
}

TEST_F(MailboxList, OpensAsWideAsTheScreenAllowsOrWholeDatesNeed) {
    const auto& main = mainWindow();
    const int screen = main.screen()->availableSize().width();
    ASSERT_LT(screen, 1'900) << "too narrow for whole dates";
    EXPECT_EQ(main.width(), std::max(screen * 19 / 20, main.minimumSizeHint().width()));
    int columns = 0;
    for (int column = 0; column < 5; ++column) {
        columns += main.MailGrid->columnWidth(column);
    }
    EXPECT_NEAR(columns, main.MailGrid->usableWidth(), 3);
}
