#include "components/controls/line_box.h"
#include "tests/support/window_test.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTest>

using controls::LineBox;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class LineBoxTest : public support::WindowTest {
  public:
    ~LineBoxTest() override { QGuiApplication::clipboard()->clear(); }

  protected:
    void paste(const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier);
        QCoreApplication::processEvents();
    }

    LineBox box;
};

const QString kTooLong = QStringLiteral("This is too long for one line: at most 30000 characters.");
} // namespace

TEST_F(LineBoxTest, AsMuchAsFitsIsTakenWhole) {
    paste(QString(LineBox::kMostCharacters, u'x'));
    EXPECT_EQ(box.text().size(), LineBox::kMostCharacters);
    EXPECT_THAT(boxTexts(), IsEmpty());
}

TEST_F(LineBoxTest, WhatWouldBeTooLongIsRefusedWholeAndNeverCut) {
    box.setText(QStringLiteral("ann@example.org"));
    for (const qsizetype size : {LineBox::kMostCharacters, 3 * LineBox::kMostCharacters, 20'000'000}) {
        boxes.clear();
        paste(QString(size, u'x'));
        EXPECT_EQ(box.text(), QStringLiteral("ann@example.org"));
        EXPECT_THAT(boxTexts(), ElementsAre(kTooLong));
    }
}

TEST_F(LineBoxTest, AnEmptyClipboardChangesNothing) {
    QGuiApplication::clipboard()->clear();
    box.setText(QStringLiteral("ann@example.org"));
    box.paste();
    QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(box.text(), QStringLiteral("ann@example.org"));
}

TEST_F(LineBoxTest, AFullOneTakesNoMoreLettersButCanBeMadeShorter) {
    box.setText(QString(LineBox::kMostCharacters, u'x'));
    QTest::keyClicks(&box, QStringLiteral("y"));
    QCoreApplication::processEvents();
    EXPECT_EQ(box.text(), QString(LineBox::kMostCharacters, u'x'));
    EXPECT_THAT(boxTexts(), ElementsAre(kTooLong));
    QTest::keyClick(&box, Qt::Key_Backspace);
    EXPECT_EQ(box.text().size(), LineBox::kMostCharacters - 1);
}
