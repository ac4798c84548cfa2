#include "components/transport/server_name.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using transport::parseServerName;

struct Case {
    const char* name;
    const char* typed;
    /** Empty when the text names no server. */
    const char* host;
    std::uint16_t port;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table{
        {"Host", "mail.example.org", "mail.example.org", 110},
        {"HostAndPort", "mail.example.org:1110", "mail.example.org", 1110},
        {"BlanksAround", "  mail.example.org \t", "mail.example.org", 110},
        {"Address", "192.0.2.1", "192.0.2.1", 110},
        {"AddressAndPort", "192.0.2.1:25", "192.0.2.1", 25},
        {"BareAddressOfVersion6", "2001:db8::1", "2001:db8::1", 110},
        {"ShortestAddressOfVersion6", "::1", "::1", 110},
        {"BracketedAddress", "[2001:db8::1]", "2001:db8::1", 110},
        {"BracketedAddressAndPort", "[::1]:1110", "::1", 1110},
        {"ZoneInAddress", "[fe80::1%eth0]:110", "fe80::1%eth0", 110},
        {"SmallestPort", "a:1", "a", 1},
        {"LargestPort", "a:65535", "a", 65535},
        {"LeadingZero", "a:0110", "a", 110},
        {"TwoAts", "b@c:110", "b@c", 110},
        {"Empty", "", "", 0},
        {"BlanksOnly", "   ", "", 0},
        {"PortOnly", ":110", "", 0},
        {"NoPortBehindColon", "a:", "", 0},
        {"PortZero", "a:0", "", 0},
        {"PortTooLarge", "a:65536", "", 0},
        {"PortMuchTooLarge", "a:99999999999", "", 0},
        {"PortNegative", "a:-1", "", 0},
        {"PortWithPlus", "a:+1", "", 0},
        {"PortInWords", "a:pop3", "", 0},
        {"LettersBehindPort", "a:110x", "", 0},
        {"BlankBeforePort", "a: 110", "", 0},
        {"BracketNeverClosed", "[::1", "", 0},
        {"NothingInBrackets", "[]", "", 0},
        {"NothingInBracketsAndPort", "[]:110", "", 0},
        {"TextBehindBracket", "[::1]110", "", 0},
        {"NoPortBehindBracket", "[::1]:", "", 0},
        {"PortInWordsBehindBracket", "[::1]:x", "", 0},
    };
    return table;
}

class ServerNameCase : public testing::TestWithParam<Case> {};

TEST_P(ServerNameCase, IsReadAsHostAndPort) {
    const Case& expected = GetParam();
    const auto name = parseServerName(QString::fromLatin1(expected.typed), 110);
    if (*expected.host == '\0') {
        EXPECT_EQ(name, std::nullopt);
        return;
    }
    ASSERT_TRUE(name);
    EXPECT_EQ(name->host.toStdString(), expected.host);
    EXPECT_EQ(name->port, expected.port);
}

INSTANTIATE_TEST_SUITE_P(Names, ServerNameCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

TEST(ServerName, TakesTheDefaultPortOfItsProtocol) {
    EXPECT_EQ(parseServerName(QStringLiteral("a"), 25)->port, 25);
}

} // namespace
