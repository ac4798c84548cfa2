#pragma once

// A text box on its own, filled and typed into.

#include "components/controls/text_box.h"
#include "tests/support/application.h"

#include <QApplication>
#include <QTest>
#include <QTextBlock>
#include <gtest/gtest.h>

#include <string>

namespace support {

class TextBoxTest : public testing::Test {
  protected:
    void fillWith(const std::string& text) {
        box.setBytes(text);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !box.isFilling(); }, 30'000));
    }

    /** Types at the start of the box's line of this number, counted from 0. */
    void typeAt(int line, const QString& text) {
        QTextCursor cursor(box.document()->findBlockByNumber(line));
        box.setTextCursor(cursor);
        QTest::keyClicks(&box, text);
    }

    QApplication& application = support::application();
    controls::TextBox box;
};

} // namespace support
