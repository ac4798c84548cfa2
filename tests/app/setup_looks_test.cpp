// What a person, and a screen reader, finds in the setup window.

#include "tests/support/places.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmSetup.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTest>

#include <map>
#include <set>

using support::WindowTest;

namespace {
class SetupLooks : public WindowTest {
  protected:
    SetupLooks() {
        auto school = support::schoolSettings(QStringLiteral("pop.example.org"));
        school.AddressLookup = QStringLiteral("Directory Server");
        writeSettings(school);
        startUp();
        loginWindow().cmdSetup->click();
    }

    static QList<QWidget*> inOrder() {
        const frmSetup& window = setupWindow();
        return {window.txtSchool,      window.txtPOP,          window.txtSMTP,        window.txtDomain,
                window.cboShowGetMail, window.cboCheckNewMail, window.cboPlayWav,     window.cboShowDatabase,
                window.cboAddressIn,   window.txtLDAPServer,   window.txtSearchBase,  window.cboSetup,
                window.cboPrinter,     window.cboSaveCopy,     window.cboAttachments, window.txtSaveDir,
                window.cboDrive,       window.cboDir,          window.cmdUpdate,      window.cmdExit};
    }

    static QString accessibleText(QWidget* control, QAccessible::Text kind) {
        return QAccessible::queryAccessibleInterface(control)->text(kind);
    }

    /** The captions that a screen reader finds for the control. */
    static QStringList captionsOf(QWidget* control) {
        QStringList captions;
        for (const auto& [other, relation] : QAccessible::queryAccessibleInterface(control)->relations()) {
            if (relation.testFlag(QAccessible::Label)) {
                captions.append(other->text(QAccessible::Name));
            }
        }
        return captions;
    }
};
} // namespace

TEST_F(SetupLooks, CaptionsAreAsPeopleKnowThemAndEachNamesItsField) {
    const frmSetup& window = setupWindow();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Brindlewake Setup"));
    EXPECT_EQ(window.cmdUpdate->text(), QStringLiteral("&Update"));
    EXPECT_EQ(window.cmdExit->text(), QStringLiteral("E&xit"));
    const std::map<QWidget*, QString> captions = {
        {window.cboSetup, QStringLiteral("Show Setup Button:")},
        {window.txtPOP, QStringLiteral("POP Server:")},
        {window.txtSMTP, QStringLiteral("SMTP Server:")},
        {window.txtDomain, QStringLiteral(" Domain Name:")},
        {window.txtSchool, QStringLiteral("Institution Name:")},
        {window.cboPlayWav, QStringLiteral(" Play Wav:")},
        {window.cboShowDatabase, QStringLiteral("Find Address Button:")},
        {window.cboAttachments, QStringLiteral("Send Attachments:")},
        {window.txtSaveDir, QStringLiteral("Attachment Directory:")},
        {window.cboPrinter, QStringLiteral("Printer:")},
        {window.cboSaveCopy, QStringLiteral("Save Copy of Sent Messages:")},
        {window.cboShowGetMail, QStringLiteral("Check for New Mail Button:")},
        {window.cboCheckNewMail, QStringLiteral("Check for New Mail Every:")},
        {window.txtLDAPServer, QStringLiteral("LDAP Server:")},
        {window.txtSearchBase, QStringLiteral("Search Base:")},
        {window.cboAddressIn, QStringLiteral("Find Address In:")}};
    std::map<QWidget*, QString> found;
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr) {
            found[label->buddy()] = label->text();
        }
    }
    EXPECT_EQ(found, captions);
    for (const auto& [control, caption] : captions) {
        // The second relation is the title of the field's group.
        EXPECT_EQ(captionsOf(control).value(0), caption);
    }
}

TEST_F(SetupLooks, MinsStandsBehindTheInterval) {
    for (const QLabel* label : setupWindow().findChildren<QLabel*>()) {
        if (label->text() == QLatin1String("Mins")) {
            const QWidget* interval = setupWindow().cboCheckNewMail;
            const QPoint place = label->mapTo(&setupWindow(), QPoint());
            EXPECT_GT(place.x(), interval->mapTo(&setupWindow(), QPoint(interval->width(), 0)).x());
            EXPECT_LT(std::abs(place.y() - interval->mapTo(&setupWindow(), QPoint()).y()),
                      interval->height());
            return;
        }
    }
    FAIL() << "there is no such label";
}

TEST_F(SetupLooks, TheListsWithoutCaptionsHaveNamesForScreenReaders) {
    // Screen readers take a combo box's text for its name.
    EXPECT_EQ(accessibleText(setupWindow().cboDrive, QAccessible::Description),
              QStringLiteral("Drive of the attachment directory"));
    EXPECT_EQ(accessibleText(setupWindow().cboDir, QAccessible::Name),
              QStringLiteral("Folders for the attachment directory"));
    EXPECT_NE(accessibleText(setupWindow().cboDir, QAccessible::Description), QString());
}

TEST_F(SetupLooks, TabWalksThroughTheControlsAsTheyAreRead) {
    frmSetup& window = setupWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (QWidget* control : inOrder()) {
        ASSERT_NE(window.focusWidget(), nullptr);
        EXPECT_EQ(window.focusWidget(), control) << window.focusWidget()->objectName().toStdString()
                                                 << " for " << control->objectName().toStdString();
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(window.focusWidget(), inOrder().first());
}

TEST_F(SetupLooks, AControlThatTabReachesIsScrolledIntoView) {
    frmSetup& window = setupWindow();
    window.resize(window.minimumSizeHint().expandedTo(QSize(500, 250)));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (QWidget* control : inOrder()) {
        EXPECT_FALSE(control->visibleRegion().isEmpty()) << control->objectName().toStdString();
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
}

TEST_F(SetupLooks, WhereTwoColumnsDoNotFitOneStandsBelowTheOther) {
    frmSetup& window = setupWindow();
    const auto place = [&window](const QWidget* control) { return control->mapTo(&window, QPoint()); };
    window.resize(1100, 700);
    QCoreApplication::processEvents();
    EXPECT_GT(place(window.cboSetup).x(), place(window.txtSearchBase).x());
    EXPECT_LT(place(window.cboSetup).y(), place(window.txtSearchBase).y());
    window.resize(480, 700);
    QCoreApplication::processEvents();
    EXPECT_GT(place(window.cboSetup).y(), place(window.txtSearchBase).y());
    // The window scrolls down only, so no control may lie beyond its right edge.
    for (const QWidget* control : inOrder()) {
        EXPECT_LE(place(control).x() + control->width(), window.width())
            << control->objectName().toStdString();
    }
}

TEST_F(SetupLooks, FitsAScreenOf1024By768WithNothingToScrollTo) {
    frmSetup& window = setupWindow();
    window.resize(1000, 690);
    QCoreApplication::processEvents();
    for (const QWidget* control : inOrder()) {
        EXPECT_EQ(control->visibleRegion().boundingRect().size(), control->size())
            << control->objectName().toStdString();
    }
}

// The offscreen platform's screen has no room for it. This test also runs under a window manager.
TEST_F(SetupLooks, OpensWithNothingToScrollToWhereTheScreenHasRoom) {
    const frmSetup& window = setupWindow();
    const QSize screen = window.screen()->availableSize();
    if (screen.width() < 1200) {
        EXPECT_LE(window.width(), screen.width());
        return;
    }
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&setupWindow()));
    for (const QWidget* control : inOrder()) {
        EXPECT_EQ(control->visibleRegion().boundingRect().size(), control->size())
            << control->objectName().toStdString();
    }
}

TEST_F(SetupLooks, AHintBelowTheEdgeOfASmallWindowIsScrolledIntoView) {
    frmSetup& window = setupWindow();
    window.resize(660, 350);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto* const scroll = window.findChild<QScrollArea*>();
    ASSERT_NE(scroll, nullptr);
    window.txtSaveDir->setFocus();
    QCoreApplication::processEvents();
    scroll->ensureWidgetVisible(window.txtSaveDir, 0, 0);
    const auto* hint = window.findChild<QLabel*>(QStringLiteral("txtSaveDirHint"));
    window.txtSaveDir->setText(QStringLiteral("C:\\docs\\mail"));
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return hint->y() > window.txtSaveDir->y() &&
               hint->visibleRegion().boundingRect().size() == hint->size();
    }));
    EXPECT_FALSE(window.txtSaveDir->visibleRegion().isEmpty());
}

TEST_F(SetupLooks, TheHintOfTheFolderIsAsWideAsTheField) {
    frmSetup& window = setupWindow();
    window.resize(480, 700);
    window.txtSaveDir->setText(QStringLiteral("C:\\docs\\mail"));
    QCoreApplication::processEvents();
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("txtSaveDirHint"))->width(),
              window.txtSaveDir->width());
}

TEST_F(SetupLooks, FieldsStartOnOneLineInOneColumnAndInTwo) {
    frmSetup& window = setupWindow();
    const auto starts = [&window] {
        QCoreApplication::processEvents();
        std::set<int> found;
        for (const QWidget* control : inOrder().first(18)) {
            found.insert(control->mapTo(&window, QPoint()).x());
        }
        return found;
    };
    window.resize(480, 700);
    EXPECT_EQ(starts().size(), 1U);
    window.resize(1100, 700);
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(SetupLooks, ASwitchThatIsNeitherYesNorNoTellsWhatItCountsAs) {
    frmSetup& window = setupWindow();
    const auto* hint = window.findChild<QLabel*>(QStringLiteral("cboPrinterHint"));
    ASSERT_NE(hint, nullptr);
    EXPECT_FALSE(hint->isVisible());
    window.cboPrinter->setEditText(QStringLiteral("Yes"));
    EXPECT_TRUE(hint->isVisible());
    EXPECT_EQ(hint->text(), QStringLiteral("counts as \"no\""));
    EXPECT_EQ(accessibleText(window.cboPrinter->lineEdit(), QAccessible::Description), hint->text());
    EXPECT_EQ(window.cboPrinter->currentText(), QStringLiteral("Yes"));
    EXPECT_GE(hint->width(), hint->sizeHint().width());
    window.cboPrinter->clearEditText();
    EXPECT_EQ(hint->text(), QStringLiteral("stays as it was"));
    window.cboPrinter->setEditText(QStringLiteral("yes"));
    EXPECT_FALSE(hint->isVisible());
}

TEST_F(SetupLooks, AFolderWithoutABackslashAtItsEndTellsWhereFilesWillGo) {
    frmSetup& window = setupWindow();
    const auto* hint = window.findChild<QLabel*>(QStringLiteral("txtSaveDirHint"));
    ASSERT_NE(hint, nullptr);
    const auto hintFor = [&](const char* path) {
        window.txtSaveDir->setText(QLatin1String(path));
        EXPECT_EQ(hint->isVisible(), !hint->text().isEmpty()) << path;
        return hint->text();
    };
    EXPECT_EQ(hintFor("C:\\docs\\mail"),
              QStringLiteral("Without \"\\\" at its end, report.txt is saved as mailreport.txt."));
    EXPECT_EQ(window.txtSaveDir->accessibleDescription(), hint->text());
    EXPECT_EQ(hintFor("C:mail"),
              QStringLiteral("Without \"\\\" at its end, report.txt is saved as mailreport.txt."));
    EXPECT_EQ(hintFor("C:\\docs\\mail\\"), QString());
    EXPECT_EQ(hintFor("C:/docs/"), QString());
    EXPECT_EQ(hintFor("C:"), QString());
    EXPECT_EQ(hintFor(""), QString());
}

// Pictures for a person to look at: the window as it opens, and as it is on a small screen.
TEST_F(SetupLooks, PicturesAreTaken) {
    const QString folderName = QString::fromStdString(support::buildFolder() + "/pictures");
    ASSERT_TRUE(QDir().mkpath(folderName));
    frmSetup& window = setupWindow();
    EXPECT_TRUE(window.grab().save(folderName + QStringLiteral("/Setup.png")));
    window.resize(660, 350);
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.grab().save(folderName + QStringLiteral("/Setup-small.png")));
    window.cboPrinter->setEditText(QStringLiteral("Yes"));
    window.txtSaveDir->setText(QStringLiteral("C:\\docs\\mail"));
    for (const QSize size : {QSize(1000, 690), QSize(480, 1200)}) {
        window.resize(size);
        QCoreApplication::processEvents();
        EXPECT_TRUE(window.grab().save(folderName + QStringLiteral("/Setup-hints-%1.png").arg(size.width())));
    }
}
