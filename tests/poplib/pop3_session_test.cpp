#include "components/poplib/pop3_session.h"
#include "tests/support/described_event.h"
#include "tests/support/pieces.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using poplib::Pop3Session;
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
Pop3Session sessionThatSent(poplib::Command command,
                            std::int64_t listingBytes = Pop3Session::kMaximumListingBytes) {
    Pop3Session session(listingBytes);
    EXPECT_THAT(eventsAfter(session, "+OK\r\n"), ElementsAre("greeted []"));
    session.submit(std::move(command));
    EXPECT_THAT(session.takeOutput(), EndsWith("\r\n"));
    return session;
}

TEST(Pop3Session, SendsNothingBeforeTheServerHasGreeted) {
    Pop3Session session;
    session.submit(poplib::userCommand("bob"));
    EXPECT_EQ(session.takeOutput(), "");
    EXPECT_EQ(session.state(), Pop3Session::State::Greeting);
    eventsAfter(session, "+OK ready\r\n");
    EXPECT_EQ(session.takeOutput(), "USER bob\r\n");
}

TEST(Pop3Session, SendsOneCommandAtATimeUnlessTold) {
    Pop3Session session;
    eventsAfter(session, "+OK\r\n");
    session.submit(poplib::listCommand(1));
    session.submit(poplib::listCommand(2));
    EXPECT_EQ(session.takeOutput(), "LIST 1\r\n");
    EXPECT_EQ(session.takeOutput(), "");
    eventsAfter(session, "+OK 1 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 2\r\n");
}

TEST(Pop3Session, KeepsNoMoreCommandsUnderWayThanTold) {
    Pop3Session session;
    session.setMaximumOutstanding(2);
    eventsAfter(session, "+OK\r\n");
    for (std::int32_t number = 1; number <= 4; ++number) {
        session.submit(poplib::listCommand(number));
    }
    EXPECT_EQ(session.takeOutput(), "LIST 1\r\nLIST 2\r\n");
    eventsAfter(session, "+OK 1 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 3\r\n");
    eventsAfter(session, "+OK 2 9\r\n+OK 3 9\r\n");
    EXPECT_EQ(session.takeOutput(), "LIST 4\r\n");
}

TEST(Pop3Session, ShowsNoPasswordAmongItsCommands) {
    Pop3Session session;
    session.setMaximumOutstanding(2);
    eventsAfter(session, "+OK\r\n");
    session.submit(poplib::userCommand("bob"));
    session.submit(poplib::passCommand("secret"));
    session.takeOutput();
    EXPECT_THAT(session.shownOutput(), ElementsAre("USER bob", "PASS ****"));
    session.takeOutput();
    EXPECT_THAT(session.shownOutput(), IsEmpty());
}

TEST(Pop3Session, GoesThroughItsStates) {
    using State = Pop3Session::State;
    Pop3Session session;
    session.submit(poplib::userCommand("bob"));
    session.submit(poplib::passCommand("secret"));
    session.submit(poplib::quitCommand());
    for (const State state :
         {State::Greeting, State::Authorization, State::Authorization, State::Transaction}) {
        EXPECT_EQ(session.state(), state);
        session.takeOutput();
        eventsAfter(session, "+OK\r\n");
    }
    EXPECT_EQ(session.state(), State::Over);
    session.submit(poplib::statCommand());
    EXPECT_EQ(session.takeOutput(), "") << "nothing is sent once the session is over";
    EXPECT_THAT(eventsAfter(session, "+OK\r\n"), IsEmpty());
}

TEST(Pop3Session, StaysInItsStateWhenTheServerRefuses) {
    Pop3Session session = sessionThatSent(poplib::passCommand("secret"));
    EXPECT_THAT(eventsAfter(session, "-ERR no\r\n"), ElementsAre("refused PASS [no]"));
    EXPECT_EQ(session.state(), Pop3Session::State::Authorization);
}

TEST(Pop3Session, LetsALogOnGoOnAndShowsNothingOfIt) {
    Pop3Session session = sessionThatSent(poplib::authCommand("PLAIN", ""));
    EXPECT_THAT(session.shownOutput(), ElementsAre("AUTH PLAIN"));
    EXPECT_THAT(eventsAfter(session, "+ \r\n"), ElementsAre("go on AUTH []"));
    session.submit(poplib::authResponseCommand("AGJvYgBzZWNyZXQ="));
    EXPECT_EQ(session.takeOutput(), "AGJvYgBzZWNyZXQ=\r\n");
    EXPECT_THAT(session.shownOutput(), ElementsAre("****"));
    EXPECT_THAT(eventsAfter(session, "+ Y2hhbGxlbmdl\r\n"), ElementsAre("go on response [Y2hhbGxlbmdl]"));
    session.submit(poplib::authResponseCommand("*"));
    session.takeOutput();
    EXPECT_THAT(eventsAfter(session, "+OK in\r\n"), ElementsAre("accepted response [in]"));
    EXPECT_EQ(session.state(), Pop3Session::State::Transaction);
    EXPECT_EQ(poplib::authCommand("PLAIN", "AGJvYgBz").sent, "AUTH PLAIN AGJvYgBz");
    EXPECT_EQ(poplib::authCommand("PLAIN", "AGJvYgBz").shown, "AUTH PLAIN ****");
}

TEST(Pop3Session, LetsNothingElseGoOn) {
    Pop3Session session = sessionThatSent(poplib::statCommand());
    EXPECT_THAT(eventsAfter(session, "+ 2 320\r\n"), ElementsAre("failed out of step"));
}

TEST(Pop3Session, FailsOnceAndThenIsSilent) {
    Pop3Session session = sessionThatSent(poplib::statCommand());
    EXPECT_THAT(eventsAfter(session, "garbage\r\n+OK 0 0\r\n"), ElementsAre("failed out of step"));
    EXPECT_THAT(eventsAfter(session, "+OK 0 0\r\n"), IsEmpty());
    EXPECT_EQ(session.state(), Pop3Session::State::Over);
}

TEST(Pop3Session, TakesNoAnswerThatCameBeforeTheCommandWasSent) {
    Pop3Session session;
    eventsAfter(session, "+OK ready\r\n");
    session.receive("+OK 5 1000\r\n");
    session.submit(poplib::statCommand());
    session.takeOutput();
    EXPECT_THAT(eventsOf(session), ElementsAre("failed out of step"));
}

TEST(Pop3Session, MakesProgressWithEveryAnswerAndEveryFewKilobytesButNotWithALine) {
    Pop3Session session = sessionThatSent(poplib::retrCommand(1));
    auto progress = session.progress();
    const auto grows = [&](std::string_view bytes) {
        eventsAfter(session, bytes);
        return std::exchange(progress, session.progress()) < session.progress();
    };
    EXPECT_FALSE(grows("+OK\r\n"));
    EXPECT_FALSE(grows("Subject: a\r\n"));
    EXPECT_FALSE(grows("\r\nx"));
    EXPECT_TRUE(grows(std::string(8192, 'x')));
    EXPECT_FALSE(grows("\r\n"));
    EXPECT_TRUE(grows(".\r\n"));
    for (const poplib::Command& command : {poplib::listCommand(1), poplib::deleCommand(1)}) {
        session.submit(command);
        session.takeOutput();
        EXPECT_FALSE(grows("+OK"));
        EXPECT_TRUE(grows("\r\n"));
    }
    session.submit(poplib::listCommand(2));
    session.takeOutput();
    EXPECT_TRUE(grows("-ERR no\r\n"));
}

TEST(Pop3Session, ReadsAHeaderLineOfAMegabyteByteByByte) {
    Pop3Session session = sessionThatSent(poplib::topCommand(1, 25));
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
    Pop3Session session = sessionThatSent(poplib::topCommand(1, 25));
    std::string bytes = "+OK\r\n";
    for (int line = 0; line < 100'000; ++line) {
        bytes += "X-Line: value\r\n";
    }
    bytes += "\r\n.\r\n";
    std::size_t headerLines = 0;
    support::forEachPiece(bytes, 7, [&](std::string_view piece) {
        session.receive(piece);
        while (const auto event = session.nextEvent()) {
            headerLines += std::holds_alternative<poplib::HeaderLine>(*event) ? 1 : 0;
        }
    });
    EXPECT_EQ(headerLines, 100'000U);
}

/** The events of a line of so many bytes, line end not counted, that comes in two pieces. */
std::vector<std::string> eventsOfLine(Pop3Session& session, const std::string& start, std::size_t bytes,
                                      std::size_t bytesInTheSecondPiece) {
    const std::string line = start + std::string(bytes - start.size(), 'x') + "\r\n";
    const std::size_t first = line.size() - bytesInTheSecondPiece;
    std::vector<std::string> events = eventsAfter(session, std::string_view(line).substr(0, first));
    for (std::string& event : eventsAfter(session, std::string_view(line).substr(first))) {
        events.push_back(std::move(event));
    }
    return events;
}

TEST(Pop3Session, TakesTheLongestStatusLineWhereverTheNetworkCutsItAndNoLongerOne) {
    for (const std::size_t bytes : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(bytes);
        Pop3Session taken = sessionThatSent(poplib::topCommand(1, 25));
        EXPECT_THAT(eventsOfLine(taken, "+OK ", Pop3Session::kMaximumReplyBytes, bytes),
                    ElementsAre(testing::StartsWith("accepted TOP")));
        Pop3Session failed = sessionThatSent(poplib::topCommand(1, 25));
        EXPECT_THAT(eventsOfLine(failed, "+OK ", Pop3Session::kMaximumReplyBytes + 1, bytes),
                    ElementsAre("failed out of step"));
    }
}

TEST(Pop3Session, CutsALongerLineOfAListingWhereverTheNetworkCutsIt) {
    constexpr std::size_t longest = Pop3Session::kMaximumListingLineBytes;
    const std::string whole = "header [Subject] [" + std::string(longest - 9, 'x') + ']';
    for (const std::size_t bytes : {0U, 1U, 2U, 3U, 100'000U}) {
        for (const std::size_t surplus : {0U, 1U, 100'001U}) {
            SCOPED_TRACE(testing::Message() << bytes << ' ' << surplus);
            Pop3Session session = sessionThatSent(poplib::topCommand(1, 25));
            eventsAfter(session, "+OK\r\n");
            EXPECT_TRUE(eventsOfLine(session, "Subject: ", longest + surplus, bytes) ==
                        std::vector<std::string>{whole});
            EXPECT_THAT(
                eventsAfter(session, "\r\nbody\r\n.\r\n"),
                ElementsAre("body " + std::to_string(longest + surplus + 10) + " [body]", "ended TOP"));
        }
    }
}

TEST(Pop3Session, OnlyCountsWhatLiesBehindTheWantedLines) {
    const std::string counted =
        "..\r\n.\r.\r\n" + std::string(5U << 20U, '.') + "\r\n\r\n" + std::string(100, 'x') + "\r\n.";
    for (const std::size_t pieceBytes : {std::size_t{1} << 16U, std::string_view::npos}) {
        Pop3Session session = sessionThatSent(poplib::retrCommand(1, 2));
        std::vector<std::string> events;
        support::forEachPiece("+OK\r\na:b\r\n\r\none\r\ntwo\r\n" + counted, pieceBytes,
                              [&](std::string_view piece) {
                                  for (std::string& event : eventsAfter(session, piece)) {
                                      events.push_back(std::move(event));
                                  }
                              });
        EXPECT_THAT(events,
                    ElementsAre("accepted RETR []", "header [a] [b]", "body 12 [one]", "body 17 [two]"));
        EXPECT_THAT(eventsAfter(session, "\r\n"), ElementsAre("ended RETR"));
    }
}

/** Feeds lines of a kilobyte until the session makes another event than a line; returns the bytes fed. */
std::int64_t bytesUntilItFails(Pop3Session& session, std::int64_t atMost) {
    const std::string line = std::string(1022, 'x') + "\r\n";
    session.receive("+OK\r\n\r\n");
    eventsOf(session);
    for (std::int64_t bytes = 0; bytes < atMost; bytes += 1024) {
        session.receive(line);
        while (const auto event = session.nextEvent()) {
            if (const auto* failed = std::get_if<poplib::Failed>(&*event)) {
                EXPECT_EQ(failed->kind, poplib::FailureKind::TooLarge);
                return bytes;
            }
        }
    }
    return atMost;
}

TEST(Pop3Session, GivesUpAListingAnswerThatIsLongerThanAnySize) {
    constexpr std::int64_t limit = 1 << 20;
    Pop3Session session = sessionThatSent(poplib::topCommand(1, 25), limit);
    EXPECT_NEAR(static_cast<double>(bytesUntilItFails(session, 2 * limit)), static_cast<double>(limit), 2048);
    EXPECT_EQ(Pop3Session::kMaximumListingBytes, 2'147'483'647);
}

TEST(Pop3Session, GivesUpAMessagePastItsLimit) {
    Pop3Session session = sessionThatSent(poplib::retrCommand(1));
    constexpr std::int64_t limit = Pop3Session::kMaximumMessageBytes;
    EXPECT_NEAR(static_cast<double>(bytesUntilItFails(session, 2 * limit)), static_cast<double>(limit), 2048);
}

TEST(Pop3Session, TakesALineOfAWholeMessageThatNoListingWould) {
    Pop3Session session = sessionThatSent(poplib::retrCommand(1));
    const std::string line(2 * Pop3Session::kMaximumListingLineBytes, 'x');
    EXPECT_THAT(eventsAfter(session, "+OK\r\n\r\n" + line + "\r\n.\r\n"),
                ElementsAre("accepted RETR []", "body " + std::to_string(line.size() + 4) + " [" + line + ']',
                            "ended RETR"));
}

} // namespace
