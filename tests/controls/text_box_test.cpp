#include "tests/controls/text_box_fixture.h"

#include <QLabel>
#include <QScrollBar>

#include <string>

using controls::TextBox;
using support::TextBoxTest;

namespace {
std::string manyLines(int count) {
    std::string text;
    for (int line = 0; line < count; ++line) {
        text += "line " + std::to_string(line) + "\r\n";
    }
    return text;
}
} // namespace

TEST_F(TextBoxTest, GivesBackWhatWasPutInByteForByte) {
    for (const std::string text : {"", "a", "a\r\n", "a\nb\rc\r\nd", "\n", "\r\n\r\n", "\xff\x80\r\n\xc3",
                                   "a\r\r\nb", "\xe2\x80\xa8\xe2\x80\xa9\xef\xb7\x90\xc2\xa0"}) {
        fillWith(text);
        EXPECT_EQ(box.bytes(), text);
    }
    fillWith(std::string("a\0b\r\n", 5));
    EXPECT_EQ(box.bytes(), std::string("a\0b\r\n", 5));
}

TEST_F(TextBoxTest, ShowsEachLineEndAsOne) {
    fillWith("a\nb\rc\r\nd");
    EXPECT_EQ(box.toPlainText(), QStringLiteral("a\nb\nc\nd"));
    EXPECT_EQ(box.shownText(), QStringLiteral("a\nb\rc\r\nd"));
}

TEST_F(TextBoxTest, KeepsTheLinesAroundAChange) {
    fillWith("\xff one\nt\xffwo\rthree \xff\r\nfour");
    typeAt(1, QStringLiteral("X"));
    EXPECT_EQ(box.bytes(), "\xff one\nXt\xc3\xbfwo\r\nthree \xff\r\nfour");
}

TEST_F(TextBoxTest, KeepsTheLinesBetweenTheEndsWhenLinesAreAddedAndTakenAway) {
    fillWith("a\xff\nb\nc\nd\xff");
    typeAt(2, QStringLiteral("\r"));
    EXPECT_EQ(box.bytes(), "a\xff\nb\n\r\nc\r\nd\xff");
    typeAt(2, QString());
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(box.bytes(), "a\xff\nb\nc\r\nd\xff");
}

TEST_F(TextBoxTest, ALineThatBecomesTheLastOneHasNoEnd) {
    fillWith("a\r\nb\r\nc");
    QTextCursor cursor(box.document()->findBlockByNumber(1));
    cursor.movePosition(QTextCursor::PreviousCharacter);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    EXPECT_EQ(box.bytes(), "a");
}

TEST_F(TextBoxTest, WhatIsTypedIntoAnEmptyBoxIsUtf8WithMailsOwnLineEnds) {
    box.insertPlainText(QStringLiteral("Grüße"));
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClicks(&box, QStringLiteral("Ann"));
    EXPECT_EQ(box.bytes(), "Gr\xc3\xbc\xc3\x9f"
                           "e\r\nAnn");
}

TEST_F(TextBoxTest, ATextPutInByOtherMeansCountsAsTyped) {
    fillWith("first\n\xff");
    box.setPlainText(QStringLiteral("second\nthird"));
    EXPECT_EQ(box.bytes(), "second\r\nthird");
}

TEST_F(TextBoxTest, ALongTextAppearsPieceByPieceAndIsWholeAtOnce) {
    const std::string text = manyLines(20'000);
    box.setBytes(text);
    EXPECT_TRUE(box.isFilling());
    EXPECT_GT(box.document()->blockCount(), 1'000);
    EXPECT_EQ(box.bytes(), text);
    EXPECT_EQ(box.verticalScrollBar()->value(), 0);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !box.isFilling(); }));
    EXPECT_EQ(box.document()->blockCount(), 20'001);
    EXPECT_EQ(box.bytes(), text);
    EXPECT_EQ(box.textCursor().position(), 0);
}

TEST_F(TextBoxTest, UntilItIsCompleteNobodyCanWriteIntoIt) {
    box.setBytes(manyLines(20'000));
    EXPECT_TRUE(box.isReadOnly());
    box.setBytes(manyLines(30'000));
    EXPECT_TRUE(box.isReadOnly());
    ASSERT_TRUE(QTest::qWaitFor([this] { return !box.isFilling(); }));
    EXPECT_FALSE(box.isReadOnly());
    EXPECT_EQ(box.document()->blockCount(), 30'001);
}

TEST_F(TextBoxTest, AnotherTextTakesThePlaceOfOneThatIsStillAppearing) {
    box.setBytes(manyLines(20'000));
    fillWith("short");
    EXPECT_EQ(box.toPlainText(), QStringLiteral("short"));
    EXPECT_FALSE(box.isReadOnly());
}

TEST_F(TextBoxTest, UndoTakesBackWhatWasTypedAndNeverTheTextItself) {
    fillWith("text");
    typeAt(0, QStringLiteral("new "));
    box.undo();
    EXPECT_EQ(box.toPlainText(), QStringLiteral("text"));
    box.undo();
    EXPECT_EQ(box.toPlainText(), QStringLiteral("text"));
}

TEST_F(TextBoxTest, AVeryLongLineIsShownOnSeveralAndStaysOne) {
    const std::string line = std::string(25'000, 'x') + "\xc3\xa4\r\nend";
    fillWith(line);
    EXPECT_EQ(box.document()->blockCount(), 4);
    EXPECT_EQ(box.bytes(), line);
    typeAt(3, QStringLiteral("the "));
    EXPECT_EQ(box.bytes(), std::string(25'000, 'x') + "\xc3\xa4\r\nthe end");
}

TEST_F(TextBoxTest, OfMoreLinesThanAnybodyReadsTheRestIsToldButNotShown) {
    const std::string text = std::string(TextBox::kMostShownLines, '\n') + "rest\xff";
    fillWith(text);
    EXPECT_EQ(box.document()->blockCount(), static_cast<int>(TextBox::kMostShownLines));
    EXPECT_EQ(box.bytesNotShown(), 5U);
    const auto* const note = box.findChild<QLabel*>(QStringLiteral("lblNotShown"));
    EXPECT_TRUE(note->isVisibleTo(&box));
    EXPECT_EQ(note->text(),
              QStringLiteral("The last 5 bytes of this text are not shown. They stay part of it: "
                             "it is forwarded, sent and printed whole."));
    EXPECT_EQ(box.accessibleDescription(), note->text());
    EXPECT_TRUE(box.bytes() == text);
    EXPECT_TRUE(box.shownText() == QString(TextBox::kMostShownLines, u'\n') + QStringLiteral("restÿ"));
    fillWith("short");
    EXPECT_FALSE(note->isVisibleTo(&box));
    EXPECT_EQ(box.accessibleDescription(), QString());
}

TEST_F(TextBoxTest, TheNoteStandsBelowTheTextAndCoversNoneOfIt) {
    box.resize(300, 200);
    box.show();
    const int before = box.viewport()->height();
    fillWith(std::string(TextBox::kMostShownLines, '\n') + "rest");
    const auto* const note = box.findChild<QLabel*>(QStringLiteral("lblNotShown"));
    EXPECT_GT(note->height(), box.fontMetrics().height());
    EXPECT_EQ(box.viewport()->height(), before - note->height());
    EXPECT_GT(note->geometry().top(), box.viewport()->geometry().bottom());
    fillWith("short");
    EXPECT_EQ(box.viewport()->height(), before);
}

TEST_F(TextBoxTest, WhatIsNotShownStaysWhateverIsDoneToTheRest) {
    const std::string shown(TextBox::kMostShownLines, '\n');
    fillWith(shown + "rest\xff");
    typeAt(0, QStringLiteral("X"));
    // Not EXPECT_EQ, since GoogleTest cannot list the differences of texts of so many lines.
    EXPECT_TRUE(box.bytes() == "X\r" + shown + "rest\xff");
    typeAt(static_cast<int>(TextBox::kMostShownLines) - 1, QStringLiteral("Y"));
    const std::string changed = box.bytes();
    EXPECT_EQ(changed.substr(changed.size() - 9), "\r\nY\nrest\xff");
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(box.bytes(), "\nrest\xff");
    box.undo();
    EXPECT_TRUE(box.bytes() == changed);
}

TEST_F(TextBoxTest, ATextIsCutForShowingOnlyWhereSomethingIsLeftOut) {
    fillWith(std::string(TextBox::kMostShownLines, '\n'));
    EXPECT_EQ(box.document()->blockCount(), static_cast<int>(TextBox::kMostShownLines) + 1);
    EXPECT_EQ(box.bytesNotShown(), 0U);
}

TEST_F(TextBoxTest, ACharacterIsNeverCutInTwo) {
    std::string text = "x";
    for (int i = 0; i < 10'000; ++i) {
        text += "\xc3\xa4";
    }
    fillWith(text);
    for (QTextBlock block = box.document()->firstBlock(); block.isValid(); block = block.next()) {
        EXPECT_FALSE(block.text().contains(QChar(0xC3)));
        EXPECT_FALSE(block.text().contains(QChar::ReplacementCharacter));
    }
    fillWith(std::string(50'000, '\x80'));
    EXPECT_EQ(box.document()->blockCount(), 5);
}
