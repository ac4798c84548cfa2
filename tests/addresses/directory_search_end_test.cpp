// When a search of a directory ends, and who may end it.

#include "tests/addresses/directory_fixture.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using addresses::FoundAddresses;
using support::ann;
using support::Conversation;
using support::lookedUp;
using support::lookedUpAt;
using support::Peer;
using support::saying;
using support::ScriptedServer;
using support::searchDone;
using support::silent;
using support::sourceFor;
using support::startTlsAnswer;
using testing::SizeIs;
using namespace std::chrono_literals;

TEST(DirectorySearch, WaitsNoLongerThanItMay) {
    const support::TrustedRoot trusted;
    const ScriptedServer server(silent());
    for (const char* const scheme : {"plain://", "", "starttls://", "tls://"}) {
        EXPECT_EQ(lookedUpAt(server, scheme, 100ms).trouble,
                  "The directory server did not answer in time. Try again later. Error# 20302")
            << scheme;
    }
    const ScriptedServer endless([](Peer& peer) {
        peer.awaitBytes();
        peer.trickle(ann(1) + std::string(100'000, 'a'), 1ms);
    });
    EXPECT_THAT(lookedUpAt(endless, "plain://", 500ms).found, SizeIs(1));
}

TEST(DirectorySearch, TellsNothingOfASearchThatWasGivenUp) {
    support::application();
    ScriptedServer server(silent());
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    bool isTold = false;
    const auto tell = [&isTold](const FoundAddresses& /*outcome*/) { isTold = true; };
    source->search("ann", tell);
    source->giveUp();
    source->search("", tell);
    source->giveUp();
    source->search("ann", tell);
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connections() > 0; }));
    source->giveUp();
    EXPECT_TRUE(server.waitForEndOf(1));
    source->giveUp();
    EXPECT_FALSE(isTold);
}

TEST(DirectorySearch, TellsOnlyOfTheLastSearch) {
    const ScriptedServer server(std::vector<Conversation>{silent(), saying(ann(1) + searchDone(1, 0))});
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    bool isTold = false;
    support::application();
    source->search("bob", [&isTold](const FoundAddresses& /*outcome*/) { isTold = true; });
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connections() > 0; }));
    EXPECT_THAT(lookedUp(*source, "ann").found, SizeIs(1));
    EXPECT_FALSE(isTold);
}

TEST(DirectorySearch, MayBeDestroyedAtAnyTime) {
    support::application();
    ScriptedServer server(std::vector<Conversation>{silent(), saying(startTlsAnswer(0)), silent()});
    for (const char* const scheme : {"plain://", "starttls://", "tls://"}) {
        const std::size_t before = server.connections();
        auto source = sourceFor(QString::fromLatin1(scheme) + server.address());
        source->search("ann", [](const FoundAddresses& /*outcome*/) { ADD_FAILURE() << "told"; });
        ASSERT_TRUE(support::eventsRunUntil([&] { return server.connections() > before; }));
        source.reset();
    }
    EXPECT_TRUE(server.waitForEndOf(3));
    auto source = sourceFor(QString());
    source->search("", [](const FoundAddresses& /*outcome*/) { ADD_FAILURE() << "told"; });
    source.reset();
    support::eventsRunUntil([turns = 0]() mutable { return ++turns > 20; });
}

TEST(DirectorySearch, MayBeDestroyedByWhomItTells) {
    support::application();
    const ScriptedServer server(saying(ann(1) + searchDone(1, 0)));
    const std::pair<QString, const char*> cases[] = {
        {QStringLiteral("plain://") + server.address(), "ann"}, {server.address(), ""}, {QString(), "ann"}};
    for (const auto& [name, typed] : cases) {
        auto source = sourceFor(name);
        source->search(typed, [&source](const FoundAddresses& /*outcome*/) { source.reset(); });
        EXPECT_TRUE(support::eventsRunUntil([&source] { return source == nullptr; }));
    }
}

TEST(DirectorySearch, MayBeAskedAgainByWhomItTells) {
    support::application();
    const ScriptedServer server(saying(ann(1) + searchDone(1, 0)));
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    std::size_t found = 0;
    source->search("ann", [&](const FoundAddresses& /*outcome*/) {
        source->search("ann", [&found](const FoundAddresses& outcome) { found = outcome.found.size(); });
    });
    EXPECT_TRUE(support::eventsRunUntil([&found] { return found == 1; }));
}

} // namespace
