// QUIT goes out together with the commands of a listing.

#include "tests/poplib/pop_ahead_fixture.h"

#include <QCoreApplication>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

namespace errors = platform::errors;
using support::kAnnouncesNoTop;
using support::Peer;
using support::PopAhead;
using support::ScriptedServer;
using testing::Contains;
using testing::ElementsAre;
using testing::SizeIs;

class PopQuitAhead : public PopAhead {};

TEST_F(PopQuitAhead, QuitComesLastWhereNotAllCommandsMayBeOutstanding) {
    for (int more = 0; more < 297; ++more) {
        mailbox.deliver(support::message("more"));
    }
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), SizeIs(300));
    EXPECT_EQ(server.connections(), 1U);
    EXPECT_EQ(server.keywords().size(), 4 + 2 * 300 + 2U);
    EXPECT_EQ(server.keywords().back(), "QUIT");
}

TEST_F(PopQuitAhead, TheSessionIsNotEndedAheadWhereTopMayBeMissing) {
    mailbox.answer("CAPA", kAnnouncesNoTop);
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_EQ(pop.roundTrips(), 5U) << "CAPA; USER, PASS; STAT; LIST, TOP, UIDL; QUIT";
}

TEST_F(PopQuitAhead, AServerThatHangsUpBeforeItsLastRepliesAreReadHasStillGivenThem) {
    mailbox.on("QUIT", [](Peer& peer) {
        peer.send("+OK good-bye\r\n");
        peer.reset();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    pop.listAhead(1, 3, 25);
    ASSERT_TRUE(server.waitForEndOf(1));
    for (std::int16_t number = 1; number <= 3; ++number) {
        ASSERT_EQ(listOne(number), 0);
        QCoreApplication::processEvents();
    }
    ASSERT_EQ(logOff(), 0);
    EXPECT_THAT(trail, Contains("< +OK good-bye"));
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopQuitAhead, AServerThatHangsUpBehindAMessageServesTheNextSession) {
    mailbox.on("QUIT", [](Peer& peer) { peer.reset(); });
    pop.setListing(false);
    ScriptedServer server(mailbox);
    ASSERT_EQ(logOn(server), 0);
    pop.openAhead(2);
    ASSERT_GT(sizeOf(2), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    ASSERT_EQ(retrieve(2, 0), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(logOff(), 0);
    mailbox.answerProperly("QUIT");
    ASSERT_EQ(logOn(), 0);
    EXPECT_EQ(retrieve(2, 0), 0);
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopQuitAhead, AServerThatHasRefusedTopIsNotToldToEndItsNextSessionAhead) {
    mailbox.answer("TOP 2", "-ERR not this one\r\n");
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    ASSERT_EQ(listing(), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]", "2", "two]"));
    EXPECT_EQ(server.connections(), 3U);
}

TEST_F(PopQuitAhead, WhereTheSecondSessionIsRefusedTheListingIsWithoutThoseLinesAndTheNextOneIsWhole) {
    mailbox.answer("TOP 2", "-ERR not this one\r\n").on("PASS", [](Peer& peer) {
        peer.send(peer.connection() == 1 ? "-ERR [LOGIN-DELAY] too soon\r\n" : "+OK\r\n");
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]"));
    EXPECT_EQ(pop.messageCount(), 3);
    ASSERT_EQ(listing(), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "three]", "2", "two]"));
    EXPECT_EQ(server.connections(), 3U);
}

TEST_F(PopQuitAhead, TheSecondSessionCanBeGivenUp) {
    mailbox.answer("TOP 2", "-ERR not this one\r\n").on("PASS", [](Peer& peer) {
        peer.connection() == 1 ? peer.holdSilent() : peer.send("+OK\r\n");
    });
    ScriptedServer server(mailbox);
    const support::WhenItHolds waiting(
        [&] { return server.connections() == 2 && server.keywords().back() == "PASS"; },
        [&] { pop.giveUp(); });
    EXPECT_EQ(listing(server), errors::GivenUp);
    EXPECT_EQ(logOff(), 0);
}

TEST_F(PopQuitAhead, AMessageThatIsGoneBeforeItIsFetchedHasNoLines) {
    mailbox.answer("TOP 3", "-ERR not this one\r\n").on("QUIT", [this](Peer& peer) {
        if (peer.connection() == 0) {
            mailbox.remove(3);
        }
        peer.close();
    });
    ScriptedServer server(mailbox);
    ASSERT_EQ(listing(server), 0);
    EXPECT_THAT(subjects(), ElementsAre("one]", "two]", "3"));
    EXPECT_EQ(pop.messageCount(), 3) << "as many as were listed";
}

} // namespace
