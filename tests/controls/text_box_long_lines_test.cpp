// A line that is shown on several lines stays one line when it is copied, found, edited and taken out.

#include "components/controls/shown_lines.h"
#include "tests/controls/text_box_fixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <string>

using controls::TextBox;

namespace {
class TextBoxLongLines : public support::TextBoxTest {
  public:
    ~TextBoxLongLines() override { QGuiApplication::clipboard()->clear(); }

  protected:
    QString copied(int start, int end) {
        QTextCursor cursor(box.document());
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        box.setTextCursor(cursor);
        QTest::keyClick(&box, Qt::Key_C, Qt::ControlModifier);
        return QGuiApplication::clipboard()->text();
    }

    QString copiedWhole() { return copied(0, box.document()->characterCount() - 1); }

    void pressAt(int position, Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QTextCursor cursor(box.document());
        cursor.setPosition(position);
        box.setTextCursor(cursor);
        QTest::keyClick(&box, key, held);
    }

    int startOf(int block) const { return box.document()->findBlockByNumber(block).position(); }

    int endOf(int block) const {
        return startOf(block) + box.document()->findBlockByNumber(block).length() - 1;
    }

    void expectBytes(const std::string& wanted) {
        // Not EXPECT_EQ, since GoogleTest would print both texts with their very long lines.
        const std::string held = box.bytes();
        EXPECT_TRUE(held == wanted) << held.size() << " bytes instead of " << wanted.size();
    }

    const std::string a = std::string(controls::kLongestShownLine, 'a');
    const std::string b = std::string(controls::kLongestShownLine, 'b');
    const std::string c = "ccc";
    const std::string line = a + b + c;
    const std::string text = "first\r\n" + line + "\r\nlast";
};
} // namespace

TEST_F(TextBoxLongLines, AreCopiedAsOneLine) {
    fillWith(text);
    ASSERT_EQ(box.document()->blockCount(), 5);
    EXPECT_TRUE(copiedWhole() == QString::fromStdString("first\n" + line + "\nlast"));
    EXPECT_EQ(copied(startOf(2) - 3, startOf(2) + 2), QStringLiteral("aabb"));
    EXPECT_EQ(copied(endOf(2), startOf(3)), QString());
    EXPECT_EQ(copied(endOf(3), startOf(4)), QStringLiteral("\n"));
}

TEST_F(TextBoxLongLines, AreCopiedAsPlainTextOnly) {
    fillWith("one\r\ntwo");
    ASSERT_EQ(copiedWhole(), QStringLiteral("one\ntwo"));
    EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasHtml());
}

TEST_F(TextBoxLongLines, StayOneWhereverTheyAreEdited) {
    for (const int block : {1, 2, 3}) {
        fillWith(text);
        const int at = startOf(block) + 1;
        pressAt(at, Qt::Key_X);
        std::string wanted = text;
        wanted.insert(static_cast<std::size_t>(at) + 1U - static_cast<std::size_t>(block - 1), "x");
        expectBytes(wanted);
        EXPECT_TRUE(copiedWhole() == QString::fromStdString(wanted).remove(u'\r'));
        box.undo();
        expectBytes("first\r\n" + line + "\r\nlast");
        box.redo();
        expectBytes(wanted);
    }
}

TEST_F(TextBoxLongLines, StayOneWhenTextIsDeletedAcrossABreakAndBroughtBack) {
    fillWith(text);
    copied(endOf(1) - 2, startOf(2) + 2);
    QTest::keyClick(&box, Qt::Key_Delete);
    const std::string wanted = "first\r\n" + a.substr(2) + b.substr(2) + c + "\r\nlast";
    expectBytes(wanted);
    box.undo();
    ASSERT_EQ(box.document()->blockCount(), 5);
    expectBytes(text);
    pressAt(startOf(2), Qt::Key_X);
    expectBytes("first\r\n" + a + "x" + b + c + "\r\nlast");
}

TEST_F(TextBoxLongLines, ALetterAndNotTheBreakIsDeletedBesideIt) {
    fillWith(text);
    pressAt(endOf(1), Qt::Key_Delete);
    expectBytes("first\r\n" + a + b.substr(1) + c + "\r\nlast");
    fillWith(text);
    pressAt(startOf(2), Qt::Key_Backspace);
    expectBytes("first\r\n" + a.substr(1) + b + c + "\r\nlast");
    fillWith(text);
    pressAt(endOf(3), Qt::Key_Delete);
    expectBytes("first\r\n" + line + "last");
    fillWith(text);
    pressAt(startOf(1), Qt::Key_Backspace);
    expectBytes("first" + line + "\r\nlast");
}

TEST_F(TextBoxLongLines, ReturnAtABreakEndsTheLineThereAndLeavesNoEmptyLine) {
    for (const bool behind : {true, false}) {
        fillWith(text);
        pressAt(behind ? startOf(2) : endOf(1), Qt::Key_Return);
        EXPECT_EQ(box.document()->blockCount(), 5) << behind;
        expectBytes("first\r\n" + a + "\r\n" + b + c + "\r\nlast");
        box.undo();
        expectBytes(text);
    }
    fillWith(text);
    pressAt(startOf(2) + 4, Qt::Key_Return);
    expectBytes("first\r\n" + a + "bbbb\r\n" + b.substr(4) + c + "\r\nlast");
}

TEST_F(TextBoxLongLines, ReturnEndsALineAlsoWhereAPieceWasEmptied) {
    fillWith(text);
    copied(startOf(2), endOf(2));
    QTest::keyClick(&box, Qt::Key_Delete);
    QTest::keyClicks(&box, QStringLiteral("one"));
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClicks(&box, QStringLiteral("two"));
    expectBytes("first\r\n" + a + "one\r\ntwo" + c + "\r\nlast");
    fillWith(text);
    copied(startOf(2), endOf(2));
    QTest::keyClick(&box, Qt::Key_Delete);
    QTest::keyClick(&box, Qt::Key_Return);
    expectBytes("first\r\n" + a + "\r\n" + c + "\r\nlast");
}

TEST_F(TextBoxLongLines, OfAMultipleOfTheLimitHaveNoEmptyLineBehindThem) {
    for (const std::string& end :
         {std::string("\r\n"), std::string("\n"), std::string("\r"), std::string()}) {
        for (const int pieces : {1, 2}) {
            const std::string whole = (pieces == 1 ? a : a + b) + end;
            fillWith(whole);
            EXPECT_EQ(box.document()->blockCount(), pieces + (end.empty() ? 0 : 1));
            EXPECT_TRUE(box.toPlainText().remove(u'\n') == QString::fromStdString(pieces == 1 ? a : a + b));
            pressAt(0, Qt::Key_X);
            // Only the changed piece gets CRLF as its line end.
            expectBytes("x" + (pieces == 1 ? a + (end.empty() ? "" : "\r\n") : a + b + end));
        }
    }
}

TEST_F(TextBoxLongLines, CharactersOfSeveralBytesAreWholeOnBothSidesOfABreak) {
    for (const std::string& letter : {std::string("\xc3\xa4"), std::string("\xf0\x9f\x93\xa7")}) {
        for (std::size_t before = 0; before < letter.size(); ++before) {
            const std::string start = a.substr(before);
            const std::string twice = letter + letter;
            fillWith(start + twice + "z\r\nend");
            ASSERT_EQ(box.document()->blockCount(), 3);
            EXPECT_TRUE(copiedWhole() == QString::fromStdString(start + twice + "z\nend"));
            pressAt(startOf(1), Qt::Key_X);
            expectBytes(std::string(start).append("x").append(twice).append("z\r\nend"));
        }
    }
}

TEST_F(TextBoxLongLines, AreSearchedAcrossTheirBreaks) {
    fillWith("abx\r\n" + line + "\r\nabbcc");
    const auto found = [this](const char* wanted, bool backward) {
        const bool any = box.findText(QLatin1String(wanted), backward);
        return any ? box.textCursor().selectionStart() : -1;
    };
    const auto chosen = [this] { return box.chosenText(); };
    EXPECT_EQ(found("AaBb", false), endOf(1) - 2);
    EXPECT_EQ(chosen(), QStringLiteral("aabb"));
    EXPECT_EQ(found("bbcc", false), endOf(2) - 2);
    EXPECT_EQ(chosen(), QStringLiteral("bbcc"));
    EXPECT_EQ(found("bbcc", false), startOf(4) + 1);
    EXPECT_EQ(found("bbcc", false), -1);
    EXPECT_EQ(found("bbcc", true), endOf(2) - 2);
    EXPECT_EQ(found("ab", true), endOf(1) - 1);
    EXPECT_EQ(found("ab", true), 0);
    EXPECT_EQ(found("ab", true), -1);
    // A text across a real line end is not found.
    EXPECT_EQ(found("xa", false), -1);
    box.moveCursor(QTextCursor::Start);
    const QString longWord = QString(1, u'a') + QString::fromStdString(b) + u'c';
    EXPECT_TRUE(box.findText(longWord, false));
    EXPECT_TRUE(chosen() == longWord);
}

TEST_F(TextBoxLongLines, PastedIntoALongLineBecomePartOfIt) {
    fillWith(text);
    QGuiApplication::clipboard()->setText(QString(25'000, u'p'));
    pressAt(startOf(2) + 1, Qt::Key_V, Qt::ControlModifier);
    expectBytes("first\r\n" + a + "b" + std::string(25'000, 'p') + b.substr(1) + c + "\r\nlast");
    box.undo();
    expectBytes(text);
}

TEST_F(TextBoxLongLines, StayOneBeforeWhatIsNotShown) {
    const std::string many = std::string(TextBox::kMostShownLines - 1, '\n') + a + b;
    fillWith(many);
    ASSERT_EQ(box.bytesNotShown(), b.size());
    pressAt(endOf(static_cast<int>(TextBox::kMostShownLines) - 1), Qt::Key_X);
    EXPECT_TRUE(box.bytes().ends_with(a + "x" + b));
}
