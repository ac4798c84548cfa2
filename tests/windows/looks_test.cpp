// What every window offers for accessibility: screen readers, the keyboard, colours, small screens.

#include "tests/support/places.h"
#include "tests/support/window_test.h"
#include "windows/frmAbout.h"
#include "windows/frmFind.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <functional>
#include <map>
#include <set>

using support::WindowTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
struct WindowCase {
    const char* name;
    std::function<Form&()> window;
};

class Looks : public WindowTest, public testing::WithParamInterface<WindowCase> {
  protected:
    Looks() {
        auto fields = support::schoolSettings(QStringLiteral("pop.example.org"));
        fields.ShowDatabase = QStringLiteral("yes");
        fields.SendAttachments = QStringLiteral("yes");
        fields.AllowPrinting = QStringLiteral("yes");
        writeSettings(fields);
        startUp();
        form().show();
    }

    static Form& form() { return GetParam().window(); }

    template <class Control>
    static QList<Control*> visible() {
        QList<Control*> controls;
        for (Control* control : form().findChildren<Control*>()) {
            // A combo box or a table has inner controls of Qt's, which the program does not name.
            const bool inner = qobject_cast<QComboBox*>(control->parentWidget()) != nullptr ||
                               control->objectName().startsWith(QStringLiteral("qt_"));
            if (control->isVisibleTo(&form()) && !inner) {
                controls.append(control);
            }
        }
        return controls;
    }
};

bool takesTab(const QWidget& control) {
    return (control.focusPolicy() & Qt::TabFocus) != 0;
}

QString accessKey(const QString& caption) {
    return QKeySequence::mnemonic(caption).toString();
}
} // namespace

TEST_P(Looks, EveryControlForInputHasANameForScreenReaders) {
    QList<QWidget*> inputs;
    for (auto* control : visible<QLineEdit>()) {
        inputs.append(control);
    }
    for (auto* control : visible<QComboBox>()) {
        inputs.append(control);
    }
    for (auto* control : visible<QPlainTextEdit>()) {
        inputs.append(control);
    }
    for (auto* control : visible<QTableWidget>()) {
        inputs.append(control);
    }
    for (QWidget* input : inputs) {
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(input);
        ASSERT_NE(accessible, nullptr);
        EXPECT_NE(accessible->text(QAccessible::Name), QString()) << input->objectName().toStdString();
        EXPECT_NE(input->objectName(), QString());
    }
}

TEST_P(Looks, NoTwoControlsShareAnAccessKey) {
    std::map<QString, QString> owners;
    const auto claim = [&owners](const QString& caption) {
        const QString key = accessKey(caption);
        if (!key.isEmpty()) {
            EXPECT_TRUE(owners.emplace(key, caption).second)
                << caption.toStdString() << " and " << owners[key].toStdString();
        }
    };
    for (const QAbstractButton* button : visible<QAbstractButton>()) {
        claim(button->text());
    }
    for (const QLabel* label : visible<QLabel>()) {
        if (label->buddy() != nullptr) {
            claim(label->text());
        }
    }
}

TEST_P(Looks, EveryButtonHasAnAccessKeyOrAnotherWayIn) {
    for (const QAbstractButton* button : visible<QAbstractButton>()) {
        EXPECT_TRUE(takesTab(*button) || !accessKey(button->text()).isEmpty())
            << button->objectName().toStdString();
    }
}

TEST_P(Looks, NoCaptionIsCutOff) {
    for (const QAbstractButton* button : visible<QAbstractButton>()) {
        EXPECT_GE(button->width(), button->minimumSizeHint().width()) << button->objectName().toStdString();
    }
    for (const QLabel* label : visible<QLabel>()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
    }
}

TEST_P(Looks, CaptionsOfButtonsKeepAwayFromTheEdges) {
    for (const QPushButton* button : visible<QPushButton>()) {
        const QFontMetrics metrics = button->fontMetrics();
        const int caption = metrics.size(Qt::TextShowMnemonic, button->text()).width();
        EXPECT_GE(button->width() - caption, 2 * metrics.averageCharWidth())
            << button->objectName().toStdString();
    }
}

TEST_P(Looks, TheWindowCanBecomeSmallEnoughForASmallLaptopAt200Percent) {
    // At scale 2, a screen of 1366 x 768 pixels leaves this much beside the desktop's own bars.
    EXPECT_LE(form().minimumSizeHint().width(), 660);
    EXPECT_LE(form().minimumSizeHint().height(), 350);
}

TEST_P(Looks, TabReachesEveryControlAndComesBack) {
    form().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form()));
    std::set<QWidget*> wanted;
    for (auto* control : form().findChildren<QWidget*>()) {
        const bool reachable = control->isVisibleTo(&form()) && control->isEnabled() && takesTab(*control) &&
                               control->focusProxy() == nullptr;
        if (reachable) {
            wanted.insert(control);
        }
    }
    ASSERT_NE(form().focusWidget(), nullptr);
    QWidget* const first = form().focusWidget();
    std::set<QWidget*> reached;
    do {
        reached.insert(form().focusWidget());
        QTest::keyClick(form().focusWidget(), Qt::Key_Tab);
    } while (form().focusWidget() != first && reached.size() <= wanted.size());
    for (const QWidget* control : wanted) {
        // A focus proxy takes the keys on behalf of its owner.
        EXPECT_TRUE(reached.contains(const_cast<QWidget*>(control)) ||
                    reached.contains(control->parentWidget()) ||
                    control->objectName().startsWith(QStringLiteral("qt_")))
            << control->objectName().toStdString() << " " << control->metaObject()->className();
    }
}

TEST_P(Looks, NothingHasAColourOfItsOwnThatADarkThemeWouldContradict) {
    for (const QWidget* control : form().findChildren<QWidget*>()) {
        EXPECT_EQ(control->styleSheet(), QString()) << control->objectName().toStdString();
    }
    const QPalette before = QApplication::palette();
    QApplication::setPalette(QPalette(QColor(60, 60, 64), QColor(30, 30, 30)));
    QCoreApplication::processEvents();
    const QImage picture = form().grab().toImage();
    const QColor text = form().palette().color(QPalette::WindowText);
    QApplication::setPalette(before);
    // The window's background, measured near a corner, is dark, and its texts are light.
    EXPECT_LT(picture.pixelColor(3, picture.height() - 3).lightness(), 90);
    EXPECT_GT(text.lightness(), 160);
    // A picture of each window, for a person to look at.
    const QString folderName = QString::fromStdString(support::buildFolder() + "/pictures");
    ASSERT_TRUE(QDir().mkpath(folderName));
    EXPECT_TRUE(
        picture.save(folderName + u'/' + QLatin1String(GetParam().name) + QStringLiteral("-dark.png")));
}

namespace {
QString nameOf(QAccessible::Role role) {
    switch (role) {
    case QAccessible::Button:
        return QStringLiteral("button");
    case QAccessible::EditableText:
        return QStringLiteral("text");
    case QAccessible::StaticText:
        return QStringLiteral("label");
    case QAccessible::Table:
        return QStringLiteral("table");
    case QAccessible::List:
        return QStringLiteral("list");
    case QAccessible::ComboBox:
        return QStringLiteral("combo box");
    case QAccessible::ProgressBar:
        return QStringLiteral("progress bar");
    case QAccessible::MenuItem:
        return QStringLiteral("menu item");
    default:
        return QStringLiteral("role %1").arg(static_cast<int>(role));
    }
}

/** Writes a line for each object that a screen reader finds, indented by its depth in the tree. */
void writeTree(QAccessibleInterface& thing, int depth, QStringList& lines) {
    if (thing.state().invisible) {
        return;
    }
    lines.append(QString(qsizetype{2} * depth, u' ') + nameOf(thing.role()) + u' ' + u'"' +
                 thing.text(QAccessible::Name) + u'"');
    for (int index = 0; index < thing.childCount() && thing.role() != QAccessible::Table; ++index) {
        if (QAccessibleInterface* child = thing.child(index)) {
            writeTree(*child, depth + 1, lines);
        }
    }
}
} // namespace

TEST_P(Looks, WhatAPersonWorksWithHasANameInTheAccessibilityTree) {
    QStringList lines;
    QAccessibleInterface* const window = QAccessible::queryAccessibleInterface(&form());
    ASSERT_NE(window, nullptr);
    writeTree(*window, 0, lines);
    EXPECT_EQ(window->text(QAccessible::Name), form().windowTitle());
    EXPECT_GT(lines.size(), 2);
    for (const QString& line : lines) {
        const QString thing = line.trimmed();
        const bool workedWith =
            thing.startsWith(QStringLiteral("button")) || thing.startsWith(QStringLiteral("text")) ||
            thing.startsWith(QStringLiteral("table")) || thing.startsWith(QStringLiteral("list")) ||
            thing.startsWith(QStringLiteral("progress"));
        EXPECT_FALSE(workedWith && thing.endsWith(QStringLiteral("\"\""))) << lines.join(u'\n').toStdString();
    }
    // The accessibility tree of each window, for a person to read.
    const QString folderName = QString::fromStdString(support::buildFolder() + "/accessibility");
    ASSERT_TRUE(QDir().mkpath(folderName));
    QFile file(folderName + u'/' + QLatin1String(GetParam().name) + QStringLiteral(".txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(lines.join(u'\n').toUtf8() + '\n');
}

INSTANTIATE_TEST_SUITE_P(Windows, Looks,
                         testing::Values(WindowCase{"Main", []() -> Form& { return mainWindow(); }},
                                         WindowCase{"Login", []() -> Form& { return loginWindow(); }},
                                         WindowCase{"About", []() -> Form& { return aboutWindow(); }},
                                         WindowCase{"Compose", []() -> Form& { return composeWindow(); }},
                                         WindowCase{"Find",
                                                    []() -> Form& {
                                                        findWindow().lblFinding->setText(
                                                            QStringLiteral("Nobody found"));
                                                        findWindow().cmdUse->setEnabled(true);
                                                        return findWindow();
                                                    }},
                                         WindowCase{"Message",
                                                    []() -> Form& {
                                                        messageWindow().barFind->setVisible(true);
                                                        messageWindow().cmdSave->setEnabled(true);
                                                        return messageWindow();
                                                    }},
                                         WindowCase{"Setup", []() -> Form& { return setupWindow(); }}),
                         [](const auto& window) { return std::string(window.param.name); });
