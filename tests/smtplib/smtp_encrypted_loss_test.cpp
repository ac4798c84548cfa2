// A delivery over TLS, cut after every byte of what the server says.

#include "tests/smtplib/encrypted_smtp_fixture.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using support::Ending;
using support::overTls;
using support::ScriptedServer;
using support::validIdentity;
using testing::AnyOf;
using testing::SizeIs;
namespace errors = platform::errors;

struct Loss {
    const char* name;
    Ending ending;
    bool closeNotify;
    /** From one place to the next, in bytes. */
    std::size_t step;
};

class EncryptedDelivery : public support::EncryptedSmtpTest, public testing::WithParamInterface<Loss> {
  protected:
    /** Cuts the connection after so many bytes, sends, and checks that the error number is right. */
    void checkCutAfter(ScriptedServer& server, std::size_t bytes, std::size_t invitationEnd,
                       std::size_t confirmationEnd) {
        SCOPED_TRACE(bytes);
        server.cutAfter(bytes, GetParam().ending);
        const std::size_t connection = server.connections();
        const int error = send();
        ASSERT_TRUE(server.waitForEndOf(connection + 1));
        const std::vector<std::string> heard = server.commands(connection);
        const bool dotHeard = std::find(heard.begin(), heard.end(), ".") != heard.end();
        if (bytes < invitationEnd) {
            ASSERT_EQ(error, errors::SendingLost);
            ASSERT_FALSE(dotHeard);
        } else if (bytes >= confirmationEnd) {
            // A reset may or may not discard the confirmation that is on its way.
            ASSERT_THAT(error, AnyOf(0, errors::ConfirmationLost));
            ASSERT_TRUE(error == 0 || GetParam().ending == Ending::Reset);
        } else if (dotHeard) {
            ASSERT_EQ(error, errors::ConfirmationLost);
        } else {
            // The server was gone after its 354 reply. The dot may have left all the same.
            ASSERT_THAT(error, AnyOf(errors::SendingLost, errors::ConfirmationLost));
        }
    }
};

TEST_P(EncryptedDelivery, CutAfterAnyByteIsNeverTakenForSent) {
    mailbox.answerProperly("EHLO");
    ScriptedServer server(overTls(validIdentity({.closeNotify = GetParam().closeNotify}), mailbox));
    ASSERT_EQ(send(server, "tls://"), 0);
    ASSERT_TRUE(server.waitForEndOf(1));
    const std::size_t total = server.bytesSent();
    const std::size_t quit = std::string_view("221 2.0.0 good-bye\r\n").size();
    const std::size_t confirmation = std::string_view("250 2.0.0 message taken\r\n").size();
    const std::size_t confirmationEnd = total - quit;
    const std::size_t step = GetParam().step * (support::kSanitized ? 7 : 1);
    for (std::size_t bytes = 0; bytes <= total; bytes += step) {
        ASSERT_NO_FATAL_FAILURE(
            checkCutAfter(server, bytes, confirmationEnd - confirmation, confirmationEnd));
    }
    server.cutNoMore();
    EXPECT_EQ(send(), 0);
}

INSTANTIATE_TEST_SUITE_P(Endings, EncryptedDelivery,
                         testing::Values(Loss{"Closed", Ending::Close, false, 1},
                                         Loss{"ClosedProperly", Ending::Close, true, 5},
                                         Loss{"Reset", Ending::Reset, false, 5}),
                         [](const auto& test) { return test.param.name; });

class EncryptedLargeMessage : public support::EncryptedSmtpTest {};

TEST_F(EncryptedLargeMessage, ArrivesWhole) {
    smtp.setBody(std::string(support::kSanitized ? 1'000'000 : 10'000'000, 'x'));
    ScriptedServer server(overTls(validIdentity({.recordBytes = 1}), mailbox));
    mailbox.answerProperly("EHLO");
    EXPECT_EQ(send(server, "tls://"), 0);
    ASSERT_THAT(mailbox.messages(), SizeIs(1));
    EXPECT_EQ(progress.back().first, progress.back().second);
    EXPECT_GT(mailbox.messages().front().size(), static_cast<std::size_t>(progress.back().second) - 1);
}

} // namespace
