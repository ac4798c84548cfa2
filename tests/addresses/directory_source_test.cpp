#include "addresses/directory_source.h"
#include "tests/support/looked_up.h"
#include "tests/support/scripted_server.h"
#include "tests/support/trusted_root.h"
#include "tests/transport/resolver.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using addresses::AddressSource;
using addresses::DirectorySettings;
using addresses::makeDirectorySource;
using addresses::mostFound;
using addresses::Outcome;
using support::BeginTls;
using support::Close;
using support::Conversation;
using support::HoldSilent;
using support::lookedUp;
using support::Peer;
using support::Reset;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsIdentity;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;
using namespace std::string_literals;

// LDAP as a server writes it (RFC 4511), in BER.

std::string tlv(char tag, const std::string& value) {
    std::string length;
    if (value.size() < 0x80) {
        length = static_cast<char>(value.size());
    } else {
        length = {'\x84', static_cast<char>(value.size() >> 24U), static_cast<char>(value.size() >> 16U),
                  static_cast<char>(value.size() >> 8U), static_cast<char>(value.size())};
    }
    return tag + length + value;
}

std::string message(int number, const std::string& operation) {
    return tlv('\x30', tlv('\x02', std::string(1, static_cast<char>(number))) + operation);
}

std::string result(char tag, int code, const std::string& said = {}) {
    return tlv(tag,
               tlv('\x0a', std::string(1, static_cast<char>(code))) + tlv('\x04', "") + tlv('\x04', said));
}

std::string searchDone(int number, int code) {
    return message(number, result('\x65', code));
}

std::string startTlsAnswer(int code) {
    return message(1, result('\x78', code));
}

std::string attribute(const std::string& name, const std::vector<std::string>& values) {
    std::string set;
    for (const std::string& value : values) {
        set += tlv('\x04', value);
    }
    return tlv('\x30', tlv('\x04', name) + tlv('\x31', set));
}

std::string entry(int number, const std::string& attributes) {
    return message(number, tlv('\x64', tlv('\x04', "uid=ann") + tlv('\x30', attributes)));
}

std::string ann(int number) {
    return entry(number, attribute("cn", {"Ann"}) + attribute("mail", {"ann@example.org"}));
}

/** Says this as soon as it has been asked something. */
Conversation saying(std::string bytes, std::size_t pieceBytes = 0) {
    return [bytes = std::move(bytes), pieceBytes](Peer& peer) {
        peer.awaitBytes();
        peer.send(bytes, pieceBytes);
        peer.holdSilent();
    };
}

/** Says this and hangs up. */
Conversation lastSaying(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) {
        peer.awaitBytes();
        peer.send(bytes);
        peer.close();
    };
}

Conversation silent() {
    return Script{HoldSilent{}};
}

std::unique_ptr<AddressSource> sourceFor(const QString& server, std::chrono::milliseconds patience = 10s) {
    return makeDirectorySource({server.toStdString(), "dc=example", "ann", "secret", patience});
}

Outcome lookedUpAt(const ScriptedServer& server, const char* scheme = "plain://",
                   std::chrono::milliseconds patience = 10s) {
    return lookedUp(*sourceFor(QString::fromLatin1(scheme) + server.address(), patience), "ann");
}

constexpr const char* kFailed =
    "The connection to the directory server failed. Try again later. Error# 20302";

TEST(DirectorySource, TakesWhatComesInPiecesOfEverySize) {
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{0}}) {
        const ScriptedServer server(saying(ann(1) + searchDone(1, 0), piece));
        const Outcome outcome = lookedUpAt(server);
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
        const Outcome outcome = lookedUpAt(server, "plain://", 2s);
        EXPECT_THAT(outcome.found, IsEmpty()) << one.what;
        EXPECT_THAT(outcome.trouble, HasSubstr(" Error# 20302")) << one.what;
    }
}

TEST(DirectorySource, TellsOfAConnectionThatBreaksAndShowsWhatCameBefore) {
    const std::string whole = ann(1) + searchDone(1, 0);
    for (std::size_t bytes = 0; bytes < whole.size(); bytes += 3) {
        const ScriptedServer server(lastSaying(whole.substr(0, bytes)));
        const Outcome outcome = lookedUpAt(server);
        EXPECT_THAT(outcome.found, SizeIs(bytes < ann(1).size() ? 0 : 1)) << bytes;
        EXPECT_EQ(outcome.trouble, kFailed) << bytes;
    }
}

TEST(DirectorySource, PassesOverMessagesThatNobodyHasAskedFor) {
    const std::string reference = message(1, tlv('\x73', tlv('\x04', "ldap://192.0.2.1/")));
    const std::string intermediate = message(1, tlv('\x79', tlv('\x81', "something")));
    const ScriptedServer server(
        saying(ann(7) + searchDone(7, 0) + reference + intermediate + ann(1) + searchDone(1, 0)));
    const Outcome outcome = lookedUpAt(server);
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(outcome.found, SizeIs(1));
}

TEST(DirectorySource, ReadsNoMoreThanFiftyOneEntries) {
    std::string endless;
    for (std::size_t count = 0; count <= mostFound; ++count) {
        endless += entry(1, attribute("mail", {"ann" + std::to_string(count) + "@example.org"}));
    }
    const ScriptedServer server(saying(endless));
    const Outcome outcome = lookedUpAt(server);
    EXPECT_THAT(outcome.found, SizeIs(mostFound));
    EXPECT_TRUE(outcome.more);
    EXPECT_EQ(outcome.trouble, "");
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
    const Outcome outcome = lookedUpAt(server);
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
        const Outcome outcome = lookedUpAt(server, "");
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
        const Outcome outcome = lookedUpAt(server, "starttls://");
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

TEST(DirectorySource, WaitsNoLongerThanItMay) {
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

TEST(DirectorySource, TellsNothingOfASearchThatWasGivenUp) {
    support::application();
    ScriptedServer server(silent());
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    bool isTold = false;
    const auto tell = [&isTold](const Outcome& /*outcome*/) { isTold = true; };
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

TEST(DirectorySource, TellsOnlyOfTheLastSearch) {
    const ScriptedServer server(std::vector<Conversation>{silent(), saying(ann(1) + searchDone(1, 0))});
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    bool isTold = false;
    support::application();
    source->search("bob", [&isTold](const Outcome& /*outcome*/) { isTold = true; });
    ASSERT_TRUE(support::eventsRunUntil([&server] { return server.connections() > 0; }));
    EXPECT_THAT(lookedUp(*source, "ann").found, SizeIs(1));
    EXPECT_FALSE(isTold);
}

TEST(DirectorySource, MayBeDestroyedAtAnyTime) {
    support::application();
    ScriptedServer server(std::vector<Conversation>{silent(), saying(startTlsAnswer(0)), silent()});
    for (const char* const scheme : {"plain://", "starttls://", "tls://"}) {
        const std::size_t before = server.connections();
        auto source = sourceFor(QString::fromLatin1(scheme) + server.address());
        source->search("ann", [](const Outcome& /*outcome*/) { ADD_FAILURE() << "told"; });
        ASSERT_TRUE(support::eventsRunUntil([&] { return server.connections() > before; }));
        source.reset();
    }
    EXPECT_TRUE(server.waitForEndOf(3));
    auto source = sourceFor(QString());
    source->search("", [](const Outcome& /*outcome*/) { ADD_FAILURE() << "told"; });
    source.reset();
    support::eventsRunUntil([turns = 0]() mutable { return ++turns > 20; });
}

TEST(DirectorySource, MayBeDestroyedByWhomItTells) {
    support::application();
    const ScriptedServer server(saying(ann(1) + searchDone(1, 0)));
    const std::pair<QString, const char*> cases[] = {
        {QStringLiteral("plain://") + server.address(), "ann"}, {server.address(), ""}, {QString(), "ann"}};
    for (const auto& [name, typed] : cases) {
        auto source = sourceFor(name);
        source->search(typed, [&source](const Outcome& /*outcome*/) { source.reset(); });
        EXPECT_TRUE(support::eventsRunUntil([&source] { return source == nullptr; }));
    }
}

TEST(DirectorySource, MayBeAskedAgainByWhomItTells) {
    support::application();
    const ScriptedServer server(saying(ann(1) + searchDone(1, 0)));
    const auto source = sourceFor(QStringLiteral("plain://") + server.address());
    std::size_t found = 0;
    source->search("ann", [&](const Outcome& /*outcome*/) {
        source->search("ann", [&found](const Outcome& outcome) { found = outcome.found.size(); });
    });
    EXPECT_TRUE(support::eventsRunUntil([&found] { return found == 1; }));
}

} // namespace
