#include "selftest/outcome_lines.h"
#include "selftest/watched_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <unistd.h>
#include <vector>

namespace {
using selftest::Interruptions;
using selftest::Note;
using selftest::Outcome;
using selftest::OutcomeLines;
using selftest::Teller;
using selftest::watchProcess;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLong{60};

class WatchedProcess : public testing::Test {
  protected:
    std::string watch(const std::function<int(Teller&)>& work, Clock::duration time = kLong) {
        const Interruptions interruptions;
        const std::string fault = watchProcess(
            work, [this](const Note& note) { notes.push_back(note); }, interruptions, Clock::now() + time);
        signal = interruptions.signal();
        return fault;
    }

    std::vector<Note> notes;
    int signal = 0;
};

[[noreturn]] void waitForever() {
    for (;;) {
        ::pause();
    }
}
} // namespace

TEST_F(WatchedProcess, TellsItsStepsToTheOneThatWatches) {
    EXPECT_THAT(watch([](Teller& teller) {
                    teller.begin("one");
                    teller.end(Outcome::Failed, "in two\nlines");
                    teller.end(Outcome::Ok);
                    teller.beginLast("two");
                    return EXIT_FAILURE;
                }),
                IsEmpty());
    EXPECT_THAT(notes, ElementsAre(Note{Note::Kind::Begins, Outcome::Ok, "one"},
                                   Note{Note::Kind::Ends, Outcome::Failed, "in two lines"},
                                   Note{Note::Kind::BeginsLast, Outcome::Ok, "two"}));
}

TEST_F(WatchedProcess, IsEndedWhenTheTimeIsUp) {
    EXPECT_THAT(watch(
                    [](Teller& teller) -> int {
                        teller.begin("wait");
                        waitForever();
                    },
                    std::chrono::milliseconds(200)),
                HasSubstr("not done within the time"));
    EXPECT_EQ(notes.size(), 1U);
}

TEST_F(WatchedProcess, IsEndedWhenAnInterruptionComes) {
    const pid_t watcher = ::getpid();
    EXPECT_THAT(watch([watcher](Teller& /*teller*/) -> int {
                    ::kill(watcher, SIGTERM);
                    waitForever();
                }),
                HasSubstr("interrupted"));
    EXPECT_EQ(signal, SIGTERM);
}

TEST_F(WatchedProcess, ThatDiesIsNoGoodEnd) {
    EXPECT_THAT(watch([](Teller& /*teller*/) -> int {
                    ::kill(::getpid(), SIGKILL);
                    waitForever();
                }),
                HasSubstr("Killed"));
    EXPECT_THAT(watch([](Teller& /*teller*/) { return 7; }), HasSubstr("status 7"));
}

TEST_F(WatchedProcess, ThatRaisesAnErrorTellsIt) {
    EXPECT_THAT(watch([](Teller& teller) -> int {
                    teller.begin("one");
                    throw std::runtime_error("why");
                }),
                IsEmpty());
    EXPECT_THAT(notes.back(), (Note{Note::Kind::Ends, Outcome::Failed, "why"}));
}

TEST(NoteOfAStep, IsReadAsItWasWrittenAndNothingElseIsOne) {
    const Note note{Note::Kind::Ends, Outcome::NotHere, "no printer"};
    std::string line = selftest::lineOf(note);
    ASSERT_EQ(line.back(), '\n');
    line.pop_back();
    EXPECT_EQ(selftest::noteOf(line), note);
    for (const char* const other : {"", "0", "30x", "03x", "ok"}) {
        EXPECT_FALSE(selftest::noteOf(other)) << other;
    }
}

namespace {
/** What is told when the process ends behind these notes. */
std::string toldAt(const std::vector<Note>& notes, const std::string& fault, bool anyFailed) {
    testing::internal::CaptureStdout();
    OutcomeLines lines;
    for (const Note& note : notes) {
        lines.take(note);
    }
    lines.processEnded(fault);
    EXPECT_EQ(lines.anyFailed(), anyFailed);
    return testing::internal::GetCapturedStdout();
}
} // namespace

TEST(OutcomeOfAProcess, IsThatOfTheStepInWhichItHasEnded) {
    const Note begins{Note::Kind::Begins, Outcome::Ok, "log in"};
    const Note last{Note::Kind::BeginsLast, Outcome::Ok, "exit"};
    const Note ok{Note::Kind::Ends, Outcome::Ok, ""};
    EXPECT_EQ(toldAt({begins, ok, last}, "", false), "ok       log in\nok       exit\n");
    EXPECT_EQ(toldAt({begins}, "", true), "FAILED   log in: the program has ended\n");
    EXPECT_EQ(toldAt({begins}, "killed", true), "FAILED   log in: killed\n");
    EXPECT_EQ(toldAt({last}, "killed", true), "FAILED   exit: killed\n");
    EXPECT_EQ(toldAt({begins, ok}, "killed", true),
              "ok       log in\nFAILED   stay alive until the end: killed\n");
    EXPECT_EQ(toldAt({begins, {Note::Kind::Ends, Outcome::NotHere, "none"}}, "", false),
              "not here log in: none\n");
    EXPECT_EQ(toldAt({begins, {Note::Kind::Ends, Outcome::Failed, "a box"}}, "", true),
              "FAILED   log in: a box\n");
}
