// A listing over TLS, cut after every byte of what the server says.

#include "mailserver/pop3_conversation.h"
#include "tests/poplib/encrypted_pop_fixture.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using support::Ending;
using support::overTls;
using support::Pop3Mailbox;
using support::ScriptedServer;
using support::TlsIdentity;
using support::validIdentity;
using testing::ElementsAreArray;
using testing::SizeIs;
namespace errors = platform::errors;

const std::vector<std::string> kMessages{"From: ann@example.org\r\nSubject: one\r\n\r\nHello\r\n.\r\n",
                                         "Subject: two\r\nX: a\r\n b\r\n\r\n"};

struct Loss {
    const char* name;
    Ending ending;
    bool closeNotify;
    /** From one place to the next, in bytes. */
    std::size_t step;
};

class EncryptedListing : public support::EncryptedPopTest, public testing::WithParamInterface<Loss> {};

TEST_P(EncryptedListing, CutAfterAnyByteIsTroubleAndNoEventIsMadeUp) {
    const Pop3Mailbox full(kMessages);
    ScriptedServer server(overTls(validIdentity({.closeNotify = GetParam().closeNotify}), full));
    name(server, "tls://");
    ASSERT_EQ(listing(), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    const std::size_t total = server.bytesSent();
    const std::vector<std::string> whole = std::exchange(content, {});
    ASSERT_THAT(whole, SizeIs(7));
    // The listing does not depend on the replies to UIDL and QUIT. A server that hangs up at CAPA is spoken
    // to without it from then on, and needs to send less.
    const std::string_view quit =
        "+OK the list follows\r\n1 message-1\r\n2 message-2\r\n.\r\n+OK good-bye\r\n";
    mailserver::Mailbox empty;
    const std::size_t capabilities = mailserver::Pop3Conversation(empty).receive("CAPA\r\n").size();
    const std::size_t step = GetParam().step * (support::kSanitized ? 7 : 1);
    for (std::size_t bytes = 0; bytes < total; bytes += step) {
        SCOPED_TRACE(bytes);
        server.cutAfter(bytes, GetParam().ending);
        const bool everythingCame = bytes + quit.size() + capabilities >= total;
        ASSERT_EQ(listing(), everythingCame ? 0 : errors::MailServerTrouble);
        ASSERT_LE(content.size(), whole.size());
        ASSERT_TRUE(std::equal(content.begin(), content.end(), whole.begin()));
        content.clear();
    }
    server.cutNoMore();
    EXPECT_EQ(listing(), 0);
    EXPECT_THAT(content, ElementsAreArray(whole));
}

INSTANTIATE_TEST_SUITE_P(Endings, EncryptedListing,
                         testing::Values(Loss{"Closed", Ending::Close, false, 1},
                                         Loss{"ClosedProperly", Ending::Close, true, 5},
                                         Loss{"Reset", Ending::Reset, false, 5}),
                         [](const auto& test) { return test.param.name; });

class EncryptedMessage : public support::EncryptedPopTest {};

TEST_F(EncryptedMessage, ThatIsCutIsNotTakenForWhole) {
    // The end of the connection is not told by TLS, as somebody on the way could bring it about.
    for (const bool closeNotify : {false, true}) {
        for (const std::size_t recordBytes : {0U, 1U}) {
            Pop3Mailbox cut(kMessages);
            cut.on("RETR", [](support::Peer& peer) {
                peer.send("+OK\r\nSubject: one\r\n\r\nHello\r\n");
                peer.close();
            });
            ScriptedServer server(
                overTls(validIdentity({.recordBytes = recordBytes, .closeNotify = closeNotify}), cut));
            ASSERT_EQ(logOn(server, "tls://"), 0);
            EXPECT_EQ(retrieve(1, 0), errors::MailServerTrouble);
        }
    }
}

} // namespace
