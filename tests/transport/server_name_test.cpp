#include "components/transport/server_name.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using transport::parseServerName;
using transport::Security;
using transport::ServerName;

constexpr transport::DefaultPorts kPop3{110, 995, 110};
constexpr transport::DefaultPorts kSmtp{25, 465, 587};

struct ServerNameCase {
    const char* name;
    const char* typed;
    /** Empty when the text names no server. */
    const char* host;
    std::uint16_t port;
};

const std::vector<ServerNameCase>& serverNames() {
    static const std::vector<ServerNameCase> table{
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

class ServerNameReading : public testing::TestWithParam<ServerNameCase> {};

TEST_P(ServerNameReading, IsReadAsHostAndPort) {
    const ServerNameCase& expected = GetParam();
    const auto name = parseServerName(QString::fromLatin1(expected.typed), kPop3);
    if (*expected.host == '\0') {
        EXPECT_EQ(name, std::nullopt);
        return;
    }
    ASSERT_TRUE(name);
    EXPECT_EQ(name->host.toStdString(), expected.host);
    EXPECT_EQ(name->port, expected.port);
}

INSTANTIATE_TEST_SUITE_P(Names, ServerNameReading, testing::ValuesIn(serverNames()),
                         [](const auto& test) { return test.param.name; });

struct SpellingCase {
    const char* name;
    const char* typed;
    const char* host;
    std::uint16_t popPort;
    std::uint16_t smtpPort;
    Security popSecurity;
    Security smtpSecurity;
};

const std::vector<SpellingCase>& spellings() {
    using enum Security;
    static const std::vector<SpellingCase> table{
        {"Bare", "a", "a", 110, 25, WhenOffered, WhenOffered},
        {"Tls", "tls://a", "a", 995, 465, FromTheStart, FromTheStart},
        {"StartTls", "starttls://a", "a", 110, 587, Demanded, Demanded},
        {"Plain", "plain://a", "a", 110, 25, Never, Never},
        {"AnyCase", "StartTLS://a", "a", 110, 587, Demanded, Demanded},
        {"BlanksAround", " TLS://a ", "a", 995, 465, FromTheStart, FromTheStart},
        {"TlsWithPort", "tls://a:1", "a", 1, 1, FromTheStart, FromTheStart},
        {"StartTlsAtTheTlsPort", "starttls://a:995", "a", 995, 995, Demanded, Demanded},
        {"PlainAtTheTlsPorts", "plain://a:465", "a", 465, 465, Never, Never},
        {"BareAtTheTlsPortOfPop3", "a:995", "a", 995, 995, FromTheStart, WhenOffered},
        {"BareAtTheTlsPortOfSmtp", "a:465", "a", 465, 465, WhenOffered, FromTheStart},
        {"BareAtTheSubmissionPort", "a:587", "a", 587, 587, WhenOffered, WhenOffered},
        {"BracketedAddress", "tls://[::1]", "::1", 995, 465, FromTheStart, FromTheStart},
        {"BracketedAddressAndPort", "starttls://[::1]:2", "::1", 2, 2, Demanded, Demanded},
        {"BareAddressOfVersion6", "plain://::1", "::1", 110, 25, Never, Never},
    };
    return table;
}

class ServerNameSpelling : public testing::TestWithParam<SpellingCase> {};

TEST_P(ServerNameSpelling, DecidesAboutEncryptionAndPort) {
    const SpellingCase& expected = GetParam();
    const QString host = QString::fromLatin1(expected.host);
    const QString typed = QString::fromLatin1(expected.typed);
    EXPECT_EQ(parseServerName(typed, kPop3), (ServerName{host, expected.popPort, expected.popSecurity}));
    EXPECT_EQ(parseServerName(typed, kSmtp), (ServerName{host, expected.smtpPort, expected.smtpSecurity}));
}

INSTANTIATE_TEST_SUITE_P(Names, ServerNameSpelling, testing::ValuesIn(spellings()),
                         [](const auto& test) { return test.param.name; });

TEST(ServerName, WithAWrongSchemeOrNoHostIsNone) {
    for (const char* typed : {"ssl://a", "pop3://a", "tls://", "starttls:// ", "plain://:110", "tls:a",
                              "tls:/a", "tls://tls://a", "://a", "tls:// :1", "http://a:80"}) {
        EXPECT_EQ(parseServerName(QString::fromLatin1(typed), kPop3), std::nullopt) << typed;
    }
}

TEST(ServerName, OnlyTheTwoStrictSpellingsAskForACertificate) {
    EXPECT_TRUE(mustBeProven(Security::FromTheStart));
    EXPECT_TRUE(mustBeProven(Security::Demanded));
    EXPECT_FALSE(mustBeProven(Security::WhenOffered));
    EXPECT_FALSE(mustBeProven(Security::Never));
}

} // namespace
