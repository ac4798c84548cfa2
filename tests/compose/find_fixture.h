#pragma once

#include "components/controls/announcement.h"
#include "tests/compose/send_fixture.h"
#include "tests/support/scripted_addresses.h"
#include "windows/frmFind.h"

#include <QApplication>
#include <QLabel>
#include <QTest>

#include <utility>
#include <vector>

namespace support {

/** A text in the source's UTF-8. */
inline QString text(const char* words) {
    return QString::fromUtf8(words);
}

inline const addresses::FoundAddress kAnn{"Ann Smith", "ann@example.net", "Mail"};
inline const addresses::FoundAddress kBob{"Miller, Bob", "bob@example.net", "Address book"};
inline const addresses::FoundAddress kCat{"", "cat@example.net", "Mail"};

/** The compose window of a member who may find addresses. */
class FindTest : public SendTest {
  protected:
    FindTest() {
        composeWindow().cmdSendto->show();
        composeWindow().cmdCCto->show();
    }

    /** Opens the window for the field To, which asks for everybody. */
    void open() {
        composeWindow().cmdSendto->click();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&findWindow()));
    }

    void openWith(std::vector<addresses::FoundAddress> found) {
        open();
        source.answer({std::move(found), false, {}});
    }

    static void type(const QString& letters) { QTest::keyClicks(findWindow().txtFind, letters); }

    static void press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, held);
    }

    static int marked() { return findWindow().lstFound->Row(); }

    static QString line() { return findWindow().lblFinding->text(); }

    static QString heard() { return findWindow().annFound->accessibleName(); }

    static QString to() { return composeWindow().tTo->text(); }

    ScriptedAddresses source;
};

} // namespace support
