// The keys of the message window, and finding in its text.

#include "components/controls/text_box.h"
#include "tests/reader/reader_fixture.h"

#include <QFontDatabase>
#include <QFontMetrics>

using controls::TextBox;
using support::ReaderTest;

namespace {
class MessageKeys : public ReaderTest {
  protected:
    static frmFrom& window() { return messageWindow(); }

    void openText(const std::string& text) {
        openOnly("From: Ann <ann@example.org>\r\nSubject: Hello\r\nDate: today\r\n\r\nText\r\n");
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
        window().tMessage->setBytes(text);
    }

    static void waitUntilFilled() {
        ASSERT_TRUE(QTest::qWaitFor([] { return !window().tMessage->isFilling(); }, 60'000));
    }

    static void find(const QString& text) {
        QTest::keyClick(&window(), Qt::Key_F, Qt::ControlModifier);
        window().barFind->txtFind->setText(text);
        QTest::keyClick(window().barFind->txtFind, Qt::Key_Return);
    }

    static QString told() { return window().barFind->lblFound->text(); }
};

/** A text so long that it appears in the box piece by piece. */
std::string longText(const std::string& lastLine) {
    std::string text;
    for (int line = 0; line < 60'000; ++line) {
        text += "line " + std::to_string(line) + "\r\n";
    }
    return text + lastLine;
}
} // namespace

TEST_F(MessageKeys, EscapeClosesTheFindBarFirstWhereverTheFocusIsAndThenTheWindow) {
    for (const bool inTheBar : {true, false}) {
        if (inTheBar) {
            openText("text");
        } else {
            doubleClick(1);
            ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
        }
        QTest::keyClick(&window(), Qt::Key_F, Qt::ControlModifier);
        ASSERT_TRUE(window().barFind->isVisible());
        QWidget* const focus =
            inTheBar ? static_cast<QWidget*>(window().barFind->txtFind) : window().cmdReply;
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_Escape);
        EXPECT_FALSE(window().barFind->isVisible());
        EXPECT_TRUE(window().isVisible());
        EXPECT_TRUE(window().tMessage->hasFocus());
        QTest::keyClick(window().tMessage, Qt::Key_Escape);
        EXPECT_FALSE(window().isVisible());
        expectUsableMainWindow();
    }
}

TEST_F(MessageKeys, EscapeDoesNothingInALetterNorInTheMainWindow) {
    openText("text");
    window().cmdReply->click();
    frmSend& compose = composeWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&compose));
    for (QWidget* field : std::initializer_list<QWidget*>{compose.tTo, compose.tMessage, compose.cmdSndit}) {
        QTest::keyClick(field, Qt::Key_Escape);
    }
    EXPECT_TRUE(compose.isVisible());
    EXPECT_EQ(compose.tSubject->text(), QStringLiteral("RE: Hello"));
    compose.cmdCancel->click();
    unload(window());
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow()));
    QTest::keyClick(&mainWindow(), Qt::Key_Escape);
    EXPECT_TRUE(mainWindow().isVisible());
    EXPECT_EQ(programEnds, 0);
}

TEST_F(MessageKeys, F3OpensTheBarAndThenFindsTheNextPlace) {
    openText("word one\r\nword two");
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_TRUE(window().barFind->isVisible());
    EXPECT_TRUE(window().barFind->txtFind->hasFocus());
    window().barFind->txtFind->setText(QStringLiteral("word"));
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_EQ(window().tMessage->textCursor().selectionEnd(), 4);
    QTest::keyClick(&window(), Qt::Key_F3);
    EXPECT_EQ(window().tMessage->textCursor().selectionEnd(), 13);
}

TEST_F(MessageKeys, FindWaitsForWhatHasNotAppearedYetAndSaysSo) {
    for (const bool backward : {false, true}) {
        if (!backward) {
            openText(longText("the needle"));
        } else {
            window().tMessage->setBytes(longText("the needle"));
        }
        ASSERT_TRUE(window().tMessage->isFilling());
        find(QStringLiteral("needle"));
        if (backward) {
            window().barFind->cmdPrevious->click();
        }
        ASSERT_TRUE(window().tMessage->isFilling()) << "nothing is waited for";
        EXPECT_EQ(told(), QStringLiteral("Waiting for the rest of the text..."));
        EXPECT_FALSE(window().tMessage->textCursor().hasSelection());
        waitUntilFilled();
        EXPECT_EQ(window().tMessage->textCursor().selectedText(), QStringLiteral("needle"));
        EXPECT_EQ(told(), backward ? QStringLiteral("Went on from the end") : QString());
    }
}

TEST_F(MessageKeys, ASearchThatWaitsEndsWithItsBarOrWithAnotherWord) {
    openText(longText("the needle"));
    find(QStringLiteral("needle"));
    QTest::keyClicks(window().barFind->txtFind, QStringLiteral("s"));
    EXPECT_EQ(told(), QString());
    window().barFind->cmdNext->click();
    EXPECT_EQ(told(), QStringLiteral("Waiting for the rest of the text..."));
    QTest::keyClick(&window(), Qt::Key_Escape);
    waitUntilFilled();
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(window().tMessage->textCursor().position(), 0);
}

TEST_F(MessageKeys, AWordThatABreakForShowingCutsIsFound) {
    const std::string start(9'997, 'x');
    openText(start + "needle in a line\r\n");
    waitUntilFilled();
    ASSERT_EQ(window().tMessage->document()->blockCount(), 3);
    find(QStringLiteral("Needle in"));
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(window().tMessage->chosenText(), QStringLiteral("needle in"));
    window().barFind->close();
    QTest::keyClick(&window(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(window().barFind->txtFind->text(), QStringLiteral("needle in"))
        << "what is chosen is looked for";
}

TEST_F(MessageKeys, WhatIsNotShownIsNotFoundAndTheBarSaysWhy) {
    openText(std::string(TextBox::kMostShownLines, '\n') + "needle");
    waitUntilFilled();
    ASSERT_EQ(window().tMessage->bytesNotShown(), 6U);
    find(QStringLiteral("needle"));
    EXPECT_EQ(told(), QStringLiteral("Not found in what is shown"));
}

TEST_F(MessageKeys, MailIsShownInLettersOfOneWidthAndStaysSoWhenItIsEnlarged) {
    openText("text");
    const QString family = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    const auto hasOneWidth = [&family](const TextBox& box) {
        const QFontMetrics metrics(box.document()->defaultFont());
        return box.font().family() == family && metrics.horizontalAdvance(QStringLiteral("iiii")) ==
                                                    metrics.horizontalAdvance(QStringLiteral("WWWW"));
    };
    const double size = window().font().pointSizeF();
    TextBox& box = *window().tMessage;
    EXPECT_TRUE(hasOneWidth(box)) << box.font().family().toStdString();
    EXPECT_EQ(box.font().pointSizeF(), size);
    QTest::keyClick(&window(), Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_TRUE(hasOneWidth(box));
    EXPECT_GT(box.font().pointSizeF(), size);
    QTest::keyClick(&window(), Qt::Key_0, Qt::ControlModifier);
    EXPECT_TRUE(hasOneWidth(box));
    EXPECT_EQ(box.font().pointSizeF(), size);
    EXPECT_NE(window().txtFrom->font().family(), family);
    EXPECT_TRUE(hasOneWidth(*composeWindow().tMessage));
    EXPECT_EQ(composeWindow().tMessage->font().pointSizeF(), size);
}

TEST_F(MessageKeys, EightyLettersFitOnALineOfAMessageAndOfALetter) {
    openText("text");
    composeWindow().show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&composeWindow()));
    for (const TextBox* box : {window().tMessage, composeWindow().tMessage}) {
        EXPECT_GT(box->width(), QFontMetrics(box->font()).horizontalAdvance(QString(80, u'W')) + 40);
    }
}
