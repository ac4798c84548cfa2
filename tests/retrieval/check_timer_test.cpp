// How often the program checks for new mail.

#include "tests/support/pop3_script.h"
#include "tests/support/window_test.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"

#include <QLineEdit>
#include <QPushButton>

#include <cstdint>
#include <cstdlib>
#include <string>

using support::Pop3Mailbox;
using support::ScriptedServer;
using support::WindowTest;
using testing::IsEmpty;

namespace {
struct Interval {
    std::int16_t minutes;
    bool runs;
    int milliseconds;
};

class CheckTimer : public WindowTest, public testing::WithParamInterface<Interval> {};
} // namespace

TEST_P(CheckTimer, NeverMakesABusyLoop) {
    Pop3Mailbox mailbox;
    ScriptedServer server{mailbox};
    auto fields = support::schoolSettings(server.address());
    fields.GetMailEvery = QString::number(GetParam().minutes);
    writeSettings(fields);
    startUp();
    loginWindow().tUser->setText(QStringLiteral("ann"));
    loginWindow().tpwd->setText(QStringLiteral("secret"));
    loginWindow().cmdLogin->click();
    EXPECT_THAT(boxTexts(), IsEmpty());
    EXPECT_EQ(mainWindow().tmrCheckMail->isActive(), GetParam().runs);
    if (GetParam().runs) {
        EXPECT_EQ(mainWindow().tmrCheckMail->interval(), GetParam().milliseconds);
    }
}

INSTANTIATE_TEST_SUITE_P(Intervals, CheckTimer,
                         testing::Values(Interval{0, false, 0}, Interval{1, true, 60'000},
                                         Interval{60, true, 3'600'000}, Interval{-1, false, 0},
                                         Interval{-32768, false, 0}, Interval{32767, true, 1'966'020'000}),
                         [](const auto& test) {
                             return (test.param.minutes < 0 ? "Minus" : "") +
                                    std::to_string(std::abs(test.param.minutes)) + "Minutes";
                         });
