#include "email/shared_settings.h"
#include "email/typed_host.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class TypedHost : public testing::Test {
  protected:
    TypedHost() { forget(); }

    ~TypedHost() override { forget(); }

    TypedHost(const TypedHost&) = delete;
    TypedHost& operator=(const TypedHost&) = delete;

    static void forget() {
        email::settings = {};
        email::derived = {};
        email::serversOfFile = {};
    }
};

struct Case {
    const char* name;
    const char* typed;
    const char* domain;
    const char* sendingServer;
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table{
        {"Host", "example.org", "example.org", "example.org"},
        {"Port", "example.org:1110", "example.org", "example.org"},
        {"Scheme", "tls://example.org", "example.org", "tls://example.org"},
        {"SchemeAndPort", "StartTLS://example.org:1110", "example.org", "StartTLS://example.org"},
        {"PortOfEncryptedPop3", "example.org:995", "example.org", "example.org"},
        {"Address", "192.0.2.1:110", "192.0.2.1", "192.0.2.1"},
        {"BracketedAddress", "tls://[2001:db8::1]:995", "[IPv6:2001:db8::1]", "tls://[2001:db8::1]"},
        {"BareAddressOfVersion6", "2001:db8::1", "[IPv6:2001:db8::1]", "2001:db8::1"},
        {"NoServersName", "b@c:port", "b@c:port", "b@c:port"},
        {"WrongScheme", "ssl://example.org", "ssl://example.org", "ssl://example.org"},
        {"Nothing", "", "", ""},
    };
    return table;
}

class TypedHostCase : public TypedHost, public testing::WithParamInterface<Case> {};

TEST_P(TypedHostCase, IsTheDomainAloneAndItsSchemeCountsForSendingToo) {
    const QString typed = QString::fromLatin1(GetParam().typed);
    email::useTypedHost(typed);
    EXPECT_EQ(email::settings.POPServer, typed);
    EXPECT_EQ(email::settings.SMTPServer, typed);
    EXPECT_EQ(email::derived.AtDomain, u'@' + QString::fromLatin1(GetParam().domain));
    EXPECT_EQ(email::sendingServer(), QString::fromLatin1(GetParam().sendingServer));
}

INSTANTIATE_TEST_SUITE_P(Hosts, TypedHostCase, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

TEST_F(TypedHost, ThePortOfTheServerInTheFileCounts) {
    email::settings.SMTPServer = QStringLiteral("tls://mail.example.org:2465");
    EXPECT_EQ(email::sendingServer(), QStringLiteral("tls://mail.example.org:2465"));
}

} // namespace
