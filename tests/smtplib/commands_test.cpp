#include "components/smtplib/commands.h"

#include <QString>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace smtplib;

TEST(AddressLiteral, IsTheAddressInBrackets) {
    const auto literalOf = [](const char* address) { return addressLiteral(QString::fromLatin1(address)); };
    EXPECT_EQ(literalOf("192.0.2.1"), "[192.0.2.1]");
    EXPECT_EQ(literalOf("::ffff:192.0.2.1"), "[192.0.2.1]");
    EXPECT_EQ(literalOf("2001:db8::1"), "[IPv6:2001:db8::1]");
    EXPECT_EQ(literalOf("fe80::1%eth0"), "[IPv6:fe80::1]") << "the zone means nothing to the server";
    EXPECT_EQ(literalOf(""), "[127.0.0.1]") << "the connection is about to break anyhow";
}

TEST(MailCommand, TellsWhatTheServerKnows) {
    const Envelope ascii{"bob@example.org", {}, 1234, false};
    const Envelope eightBit{"bob@example.org", {}, 1234, true};
    EXPECT_EQ(mailCommand(ascii, false, false).sent, "MAIL FROM:<bob@example.org>");
    EXPECT_EQ(mailCommand(ascii, true, true).sent, "MAIL FROM:<bob@example.org> SIZE=1234");
    EXPECT_EQ(mailCommand(eightBit, true, true).sent, "MAIL FROM:<bob@example.org> SIZE=1234 BODY=8BITMIME");
    EXPECT_EQ(mailCommand(eightBit, true, false).sent, "MAIL FROM:<bob@example.org> SIZE=1234");
}

TEST(MailCommand, AsksForAddressesBeyondAsciiWhereTheEnvelopeHasThem) {
    const Envelope beyond{"b\xc3\xb6"
                          "b@example.org",
                          {},
                          1234,
                          true,
                          true};
    EXPECT_EQ(mailCommand(beyond, true, true).sent, "MAIL FROM:<b\xc3\xb6"
                                                    "b@example.org> SIZE=1234 BODY=8BITMIME SMTPUTF8");
}

TEST(MailCommand, IsNeverTooLong) {
    const Envelope longest{std::string(254, 'x'), {}, INT64_MAX, true, true};
    EXPECT_LE(mailCommand(longest, true, true).sent.size() + 2, kMaximumCommandBytes);
    EXPECT_LE(rcptCommand(longest.sender).sent.size() + 2, kMaximumCommandBytes);
}

} // namespace
