#include "components/poplib/pop3_session.h"
#include "tests/support/pieces.h"
#include "tests/support/transcript.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using POPLib::Pop3Session;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

/** Takes all events that there are. */
std::vector<std::string> eventsOf(Pop3Session& session) {
    std::vector<std::string> events;
    while (const auto event = session.nextEvent()) {
        events.push_back(support::described(*event));
    }
    return events;
}

std::vector<std::string> eventsAfter(Pop3Session& session, std::string_view bytes) {
    session.receive(bytes);
    return eventsOf(session);
}

/** A session that has been greeted and has sent this command. */
Pop3Session sessionThatSent(POPLib::Command command) {
    Pop3Session session;
    EXPECT_THAT(eventsAfter(session, "+OK\r\n"), ElementsAre("greeted []"));
    session.submit(std::move(command));
    EXPECT_THAT(session.takeOutput(), EndsWith("\r\n"));
    return session;
}

TEST(Pop3Session, SendsNothingBeforeTheServerHasGreeted) {
    Pop3Session session;
    session.submit(POPLib::userCommand("bob"));
    EXPECT_EQ(session.takeOutput(), "");
    EXPECT_EQ(session.state(), Pop3Session::State::Greeting);
    eventsAfter(session, "+OK ready\r\n");
    EXPECT_EQ(session.takeOutput(), "USER bob\r\n");
}

TEST(Pop3Session, SendsOneCommandAtATimeUnlessTold) {
    Pop3Session session;
    eventsAfter(session, "+OK\r\n");
    session.submit(POPLib::listCommand(1));
    session.submit(POPLib::listCommand(2));
    EXPECT_EQ(session.takeOutput(), "LIST 1\r\n");
    EXPECT_EQ(session.takeOutput(), "");
    eventsAfter(session, "+OK 1 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 2\r\n");
}

TEST(Pop3Session, KeepsNoMoreCommandsUnderWayThanTold) {
    Pop3Session session;
    session.setMaximumUnderWay(2);
    eventsAfter(session, "+OK\r\n");
    for (std::int32_t number = 1; number <= 4; ++number) {
        session.submit(POPLib::listCommand(number));
    }
    EXPECT_EQ(session.takeOutput(), "LIST 1\r\nLIST 2\r\n");
    eventsAfter(session, "+OK 1 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 3\r\n");
    eventsAfter(session, "+OK 2 9\r\n+OK 3 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 4\r\n");
}

TEST(Pop3Session, ShowsNoPasswordAmongItsCommands) {
    Pop3Session session;
    session.setMaximumUnderWay(2);
    eventsAfter(session, "+OK\r\n");
    session.submit(POPLib::userCommand("bob"));
    session.submit(POPLib::passCommand("secret"));
    session.takeOutput();
    EXPECT_THAT(session.shownOutput(), ElementsAre("USER bob", "PASS ****"));
    session.takeOutput();
    EXPECT_THAT(session.shownOutput(), IsEmpty());
}

TEST(Pop3Session, GoesThroughItsStates) {
    using State = Pop3Session::State;
    Pop3Session session;
    session.submit(POPLib::userCommand("bob"));
    session.submit(POPLib::passCommand("secret"));
    session.submit(POPLib::quitCommand());
    for (const State state :
         {State::Greeting, State::Authorization, State::Authorization, State::Transaction}) {
        EXPECT_EQ(session.state(), state);
        session.takeOutput();
        eventsAfter(session, "+OK\r\n");
    }
    EXPECT_EQ(session.state(), State::Over);
    session.submit(POPLib::statCommand());
    EXPECT_EQ(session.takeOutput(), "") << "nothing is sent once the session is over";
    EXPECT_THAT(eventsAfter(session, "+OK\r\n"), IsEmpty());
}

TEST(Pop3Session, StaysInItsStateWhenTheServerRefuses) {
    Pop3Session session = sessionThatSent(POPLib::passCommand("secret"));
    EXPECT_THAT(eventsAfter(session, "-ERR no\r\n"), ElementsAre("refused PASS [no]"));
    EXPECT_EQ(session.state(), Pop3Session::State::Authorization);
}

TEST(Pop3Session, FailsOnceAndThenIsSilent) {
    Pop3Session session = sessionThatSent(POPLib::statCommand());
    EXPECT_THAT(eventsAfter(session, "garbage\r\n+OK 0 0\r\n"), ElementsAre("failed out of step"));
    EXPECT_THAT(eventsAfter(session, "+OK 0 0\r\n"), IsEmpty());
    EXPECT_EQ(session.state(), Pop3Session::State::Over);
}

TEST(Pop3Session, TakesNoAnswerThatCameBeforeTheCommandWasSent) {
    Pop3Session session;
    eventsAfter(session, "+OK ready\r\n");
    session.receive("+OK 5 1000\r\n");
    session.submit(POPLib::statCommand());
    session.takeOutput();
    EXPECT_THAT(eventsOf(session), ElementsAre("failed out of step"));
}

TEST(Pop3Session, MakesProgressWithEveryLineAndEveryFewKilobytes) {
    Pop3Session session = sessionThatSent(POPLib::retrCommand(1));
    auto progress = session.progress();
    const auto grows = [&](std::string_view bytes) {
        eventsAfter(session, bytes);
        return std::exchange(progress, session.progress()) < session.progress();
    };
    EXPECT_TRUE(grows("+OK\r\n"));
    EXPECT_FALSE(grows("Subject: "));
    EXPECT_TRUE(grows("a\r\n"));
    EXPECT_FALSE(grows("x"));
    EXPECT_TRUE(grows(std::string(8192, 'x')));
}

TEST(Pop3Session, ReadsAHeaderLineOfAMegabyteOctetByOctet) {
    Pop3Session session = sessionThatSent(POPLib::topCommand(1, 25));
    const std::string value((1U << 20U) - 20, 'x');
    std::vector<std::string> events;
    support::forEachPiece("+OK\r\nSubject: " + value + "\r\n\r\n.\r\n", 1, [&](std::string_view piece) {
        for (std::string& event : eventsAfter(session, piece)) {
            events.push_back(std::move(event));
        }
    });
    EXPECT_THAT(events, ElementsAre("accepted TOP []", "header [Subject] [" + value + ']', "ended TOP"));
}

TEST(Pop3Session, ReadsAHundredThousandHeaderLines) {
    Pop3Session session = sessionThatSent(POPLib::topCommand(1, 25));
    std::string bytes = "+OK\r\n";
    for (int line = 0; line < 100'000; ++line) {
        bytes += "X-Line: value\r\n";
    }
    bytes += "\r\n.\r\n";
    std::size_t headerLines = 0;
    support::forEachPiece(bytes, 7, [&](std::string_view piece) {
        session.receive(piece);
        while (const auto event = session.nextEvent()) {
            headerLines += std::holds_alternative<POPLib::HeaderLine>(*event) ? 1 : 0;
        }
    });
    EXPECT_EQ(headerLines, 100'000U);
}

struct LongestLine {
    const char* name;
    std::string start;
    std::size_t longest;
    bool listing;
    /** The event of a line of the longest length starts with this; the event of a longer one is this. */
    const char* accepted;
    const char* failed;
};

class LongestLineCase : public testing::TestWithParam<LongestLine> {
  protected:
    /** The event that a line of so many octets makes when it is cut before its last octets. */
    static std::string eventOf(std::size_t octets, std::size_t octetsBehindTheCut) {
        const LongestLine& limit = GetParam();
        Pop3Session session = sessionThatSent(POPLib::topCommand(1, 25));
        if (limit.listing) {
            eventsAfter(session, "+OK\r\n");
        }
        const std::string line = limit.start + std::string(octets - limit.start.size(), 'x') + "\r\n";
        std::vector<std::string> events =
            eventsAfter(session, std::string_view(line).substr(0, line.size() - octetsBehindTheCut));
        for (std::string& event :
             eventsAfter(session, std::string_view(line).substr(line.size() - octetsBehindTheCut))) {
            events.push_back(std::move(event));
        }
        EXPECT_THAT(events, SizeIs(1));
        return events.empty() ? std::string() : events.front();
    }
};

TEST_P(LongestLineCase, IsTakenWhereverTheNetworkCutsItAndNoLongerOne) {
    for (const std::size_t octetsBehindTheCut : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(octetsBehindTheCut);
        EXPECT_THAT(eventOf(GetParam().longest, octetsBehindTheCut),
                    testing::StartsWith(GetParam().accepted));
        EXPECT_EQ(eventOf(GetParam().longest + 1, octetsBehindTheCut), GetParam().failed);
    }
}

INSTANTIATE_TEST_SUITE_P(Limits, LongestLineCase,
                         testing::Values(LongestLine{"StatusLine", "+OK ", Pop3Session::kMaximumReplyOctets,
                                                     false, "accepted TOP", "failed out of step"},
                                         LongestLine{"LineOfAListing",
                                                     "Subject: ", Pop3Session::kMaximumListingLineOctets,
                                                     true, "header [Subject]", "failed too large"}),
                         [](const auto& test) { return test.param.name; });

/** Feeds lines of a kilobyte until the session says something else than a line; returns the octets fed. */
std::int64_t octetsUntilItFails(Pop3Session& session, std::int64_t atMost) {
    const std::string line = std::string(1022, 'x') + "\r\n";
    session.receive("+OK\r\n\r\n");
    eventsOf(session);
    for (std::int64_t octets = 0; octets < atMost; octets += 1024) {
        session.receive(line);
        while (const auto event = session.nextEvent()) {
            if (const auto* failed = std::get_if<POPLib::Failed>(&*event)) {
                EXPECT_EQ(failed->kind, POPLib::FailureKind::TooLarge);
                return octets;
            }
        }
    }
    return atMost;
}

TEST(Pop3Session, GivesUpAListingAnswerPastItsLimit) {
    Pop3Session session = sessionThatSent(POPLib::topCommand(1, 25));
    constexpr std::int64_t limit = Pop3Session::kMaximumListingOctets;
    EXPECT_NEAR(static_cast<double>(octetsUntilItFails(session, 2 * limit)), static_cast<double>(limit),
                2048);
}

TEST(Pop3Session, GivesUpAMessagePastItsLimit) {
    Pop3Session session = sessionThatSent(POPLib::retrCommand(1));
    constexpr std::int64_t limit = Pop3Session::kMaximumMessageOctets;
    EXPECT_NEAR(static_cast<double>(octetsUntilItFails(session, 2 * limit)), static_cast<double>(limit),
                2048);
}

TEST(Pop3Session, TakesALineOfAWholeMessageThatNoListingWould) {
    Pop3Session session = sessionThatSent(POPLib::retrCommand(1));
    const std::string line(2 * Pop3Session::kMaximumListingLineOctets, 'x');
    EXPECT_THAT(eventsAfter(session, "+OK\r\n\r\n" + line + "\r\n.\r\n"),
                ElementsAre("accepted RETR []", "body " + std::to_string(line.size() + 4) + " [" + line + ']',
                            "ended RETR"));
}

} // namespace
