#include "components/controls/password_box.h"
#include "tests/support/application.h"

#include <QAccessible>
#include <QLabel>
#include <QTest>
#include <gtest/gtest.h>

using controls::PasswordBox;

TEST(PasswordBox, ScreenReadersAreGivenNoText) {
    support::application();
    PasswordBox box;
    QTest::keyClicks(&box, QStringLiteral("kkk"));
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(&box);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->textInterface(), nullptr);
    EXPECT_EQ(interface->editableTextInterface(), nullptr);
    EXPECT_EQ(interface->valueInterface(), nullptr);
    for (const QAccessible::Text kind :
         {QAccessible::Name, QAccessible::Description, QAccessible::Value, QAccessible::Help}) {
        EXPECT_FALSE(interface->text(kind).contains(u'k')) << kind;
    }
}

TEST(PasswordBox, ScreenReadersKnowThatItIsAPasswordsFieldAndWhichOne) {
    support::application();
    QWidget window;
    auto* const label = new QLabel(QStringLiteral("Password:"), &window);
    auto* const box = new PasswordBox(&window);
    label->setBuddy(box);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    box->setFocus();
    QAccessibleInterface* const interface = QAccessible::queryAccessibleInterface(box);
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->role(), QAccessible::EditableText);
    EXPECT_EQ(interface->text(QAccessible::Name), QStringLiteral("Password:"));
    EXPECT_TRUE(interface->state().passwordEdit);
    EXPECT_TRUE(interface->state().editable);
    EXPECT_TRUE(interface->state().focusable);
    EXPECT_TRUE(interface->state().focused);
}

TEST(PasswordBox, WhatIsForgottenIsOverwrittenWhereItLay) {
    support::application();
    PasswordBox box;
    QTest::keyClicks(&box, QStringLiteral("secret"));
    const QString shared = box.text();
    box.forget();
    EXPECT_EQ(box.text(), QString());
    EXPECT_EQ(shared, QStringLiteral("******"));
    EXPECT_FALSE(box.isUndoAvailable());
    box.setText(QStringLiteral("a constant"));
    box.forget();
    EXPECT_EQ(box.text(), QString());
}
