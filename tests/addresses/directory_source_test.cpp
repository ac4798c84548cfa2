#include "tests/addresses/directory_fixture.h"
#include "tests/transport/resolver.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using addresses::FoundAddresses;
using addresses::mostFound;
using support::ann;
using support::attribute;
using support::Conversation;
using support::entry;
using support::lastSaying;
using support::lookedUp;
using support::lookedUpAt;
using support::message;
using support::Peer;
using support::result;
using support::saying;
using support::ScriptedServer;
using support::searchDone;
using support::sourceFor;
using support::startTlsAnswer;
using support::tlv;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* kFailed =
    "The connection to the directory server failed. Try again later. Error# 20302";

TEST(DirectorySource, TakesWhatComesInPiecesOfEverySize) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{0}}) {
        const ScriptedServer server(saying(ann(1) + searchDone(1, 0), piece));
        const FoundAddresses outcome = lookedUpAt(server);
        EXPECT_THAT(outcome.found, SizeIs(1));
        EXPECT_EQ(outcome.trouble, "");
    }
}

TEST(DirectorySource, TellsOfWhatIsNoDirectory) {
    const struct {
        const char* what;
        std::string bytes;
    } cases[] = {
        {"mail", "+OK ready\r\n"},
        {"zeros", std::string(100, '\0')},
        {"a huge length", "\x30\x84\x7f\xff\xff\xff\x02\x01\x01"s},
        {"a length of eight bytes", "\x30\x88\x7f\xff\xff\xff\xff\xff\xff\xff"s},
        {"a length without an end", "\x30\x80\x02\x01\x01\x65\x00"s},
        {"a message over the limit", "\x30\x83\x10\x00\x01\x02\x01\x01"s},
        {"no operation", message(1, "")},
        {"a result without a code", message(1, tlv('\x65', ""))},
        {"the end of the session", message(0, result('\x78', 52, "going down"))},
    };

    for (const auto& one : cases) {
        const ScriptedServer server(saying(one.bytes));
        const FoundAddresses outcome = lookedUpAt(server, "plain://", 300ms);
        EXPECT_THAT(outcome.found, IsEmpty()) << one.what;
        EXPECT_THAT(outcome.trouble, HasSubstr(" Error# 20302")) << one.what;
    }
}

TEST(DirectorySource, TellsOfAConnectionThatBreaksAndShowsWhatCameBefore) {
    const std::string whole = ann(1) + searchDone(1, 0);
    for (std::size_t bytes = 0; bytes < whole.size(); bytes += 3) {
        const ScriptedServer server(lastSaying(whole.substr(0, bytes)));
        const FoundAddresses outcome = lookedUpAt(server);
        EXPECT_THAT(outcome.found, SizeIs(bytes < ann(1).size() ? 0 : 1)) << bytes;
        EXPECT_EQ(outcome.trouble, kFailed) << bytes;
    }
}

TEST(DirectorySource, PassesOverMessagesThatNobodyHasAskedFor) {
    const std::string reference = message(1, tlv('\x73', tlv('\x04', "ldap://192.0.2.1/")));
    const std::string intermediate = message(1, tlv('\x79', tlv('\x81', "something")));
    const ScriptedServer server(
        saying(ann(7) + searchDone(7, 0) + reference + intermediate + ann(1) + searchDone(1, 0)));
    const FoundAddresses outcome = lookedUpAt(server);
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(outcome.found, SizeIs(1));
}

TEST(DirectorySource, ReadsNoMoreThanFiftyOneEntries) {
    std::string endless;
    for (std::size_t count = 0; count <= mostFound; ++count) {
        endless += entry(1, attribute("mail", {"ann" + std::to_string(count) + "@example.org"}));
    }
    const ScriptedServer server(saying(endless));
    const FoundAddresses outcome = lookedUpAt(server);
    EXPECT_THAT(outcome.found, SizeIs(mostFound));
    EXPECT_TRUE(outcome.more);
    EXPECT_EQ(outcome.trouble, "");
}

TEST(DirectorySource, ThatBreaksASearchOffShowsWhatItHasFound) {
    for (const int limit : {3, 4, 11}) {
        const ScriptedServer some(saying(ann(1) + searchDone(1, limit)));
        const FoundAddresses found = lookedUpAt(some);
        EXPECT_THAT(found.found, SizeIs(1)) << limit;
        EXPECT_TRUE(found.more) << limit;
        EXPECT_EQ(found.trouble, "") << limit;
        const ScriptedServer none(saying(searchDone(1, limit)));
        const FoundAddresses nothing = lookedUpAt(none);
        EXPECT_FALSE(nothing.more) << limit;
        EXPECT_THAT(nothing.trouble, HasSubstr("Type more of the name.")) << limit;
    }
}

TEST(DirectorySource, EndsWithAServerThatSendsWithoutEnd) {
    const ScriptedServer server([](Peer& peer) {
        peer.awaitBytes();
        for (;;) {
            peer.send(message(7, tlv('\x64', std::string(60'000, 'a'))));
        }
    });
    EXPECT_EQ(lookedUpAt(server).trouble, kFailed);
}

TEST(DirectorySource, TakesEntriesAsStrangersMakeThem) {
    std::vector<std::string> many;
    for (int count = 0; count < 1000; ++count) {
        many.push_back("ann" + std::to_string(count) + "@example.org");
    }
    const ScriptedServer server(saying(
        entry(1, attribute("mail", many)) +
        entry(1, attribute("mail", {"\xff\xd8\xff\0\x10"s, std::string(100'000, 'a') + "@example.org"})) +
        entry(1, attribute("cn", {std::string(100'000, '\xff')}) + attribute("mail", {"bob@example.org"})) +
        message(1, tlv('\x64', "\x04\x7f")) + entry(1, "") + entry(1, attribute("mail", {})) +
        searchDone(1, 0)));
    const FoundAddresses outcome = lookedUpAt(server);
    ASSERT_THAT(outcome.found, SizeIs(6));
    EXPECT_EQ(outcome.found[0].name, "");
    EXPECT_EQ(outcome.found[5].address, "bob@example.org");
    EXPECT_EQ(outcome.trouble, "");
}

TEST(DirectorySource, UnderABareNameGoesOnInClearWhereEncryptionFails) {
    const Conversation inClear = saying(ann(1) + searchDone(1, 0));

    const struct {
        const char* what;
        Conversation first;
    } cases[] = {
        {"refused", saying(startTlsAnswer(2))},
        {"no LDAP", saying("-ERR what?\r\n")},
        {"hangs up", lastSaying("")},
        {"no TLS behind it", saying(startTlsAnswer(0) + "hello, this is no TLS at all\r\n")},
        {"hangs up behind it", lastSaying(startTlsAnswer(0))},
    };

    for (const auto& one : cases) {
        const ScriptedServer server(std::vector<Conversation>{one.first, inClear});
        const FoundAddresses outcome = lookedUpAt(server, "");
        EXPECT_EQ(outcome.trouble, "") << one.what;
        EXPECT_THAT(outcome.found, SizeIs(1)) << one.what;
        EXPECT_EQ(server.connections(), 2U) << one.what;
    }
}

TEST(DirectorySource, ThatHasToBeEncryptedNeverGoesOnInClear) {
    const struct {
        const char* what;
        Conversation first;
        const char* number;
    } cases[] = {
        {"refused", saying(startTlsAnswer(2)), "Error# 20321"},
        {"no LDAP", saying("-ERR what?\r\n"), "Error# 20302"},
        {"hangs up", lastSaying(""), "Error# 20302"},
        {"no TLS behind it", saying(startTlsAnswer(0) + "hello, this is no TLS at all\r\n"), "Error# 20325"},
        {"an answer in clear behind it", saying(startTlsAnswer(0) + ann(1) + searchDone(1, 0)),
         "Error# 20325"},
    };

    for (const auto& one : cases) {
        const ScriptedServer server(std::vector<Conversation>{one.first, saying(ann(1) + searchDone(1, 0))});
        const FoundAddresses outcome = lookedUpAt(server, "starttls://");
        EXPECT_THAT(outcome.trouble, HasSubstr(one.number)) << one.what;
        EXPECT_THAT(outcome.found, IsEmpty()) << one.what;
        EXPECT_EQ(server.connections(), 1U) << one.what;
    }
}

TEST(DirectorySource, TellsWhyThereIsNoConnection) {
    const support::RefusingPort refusing;

    const struct {
        QString server;
        const char* trouble;
    } cases[] = {
        {refusing.address(), "The directory server refused the connection. Try again later. Error# 25062"},
        {QString::fromLatin1(support::kUnknownName),
         "The directory server was not found. Tell the administrator. Error# 26002"},
        {QStringLiteral("ldap://directory.example.org"),
         "The name of the directory server in the settings is none. Tell the administrator. Error# 26002"},
        {QString(),
         "The name of the directory server in the settings is none. Tell the administrator. Error# 26002"},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(lookedUp(*sourceFor(one.server), "ann").trouble, one.trouble);
    }
}

} // namespace
