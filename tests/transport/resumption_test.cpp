// Sessions that are resumed: the second connection to a server needs no second proof, but nothing that was
// not proven before counts as proven.

#include "tests/transport/encryption_fixture.h"
#include "tests/transport/resolver.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using support::Conversation;
using support::kEncrypting;
using support::overTls;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::TlsIdentity;
using support::TlsVersion;
using transport::Outcome;
using transport::Protection;
using transport::Security;

constexpr const char* kResumedHost = "mail.here.test";

/** A certificate for every name below here.test, and for 127.0.0.1. */
mailserver::CertificateDescription here() {
    mailserver::CertificateDescription description = support::loopback();
    description.names.emplace_back("*.here.test");
    return description;
}

class Resumption : public support::EncryptionFixture, public testing::WithParamInterface<TlsVersion> {
  protected:
    TlsIdentity identity(bool resumes = true) const {
        return TlsIdentity(support::testRoot().issue(here()), {.maximum = GetParam(), .resumes = resumes});
    }

    static Conversation hello(const TlsIdentity& identity) {
        return overTls(identity, Script{Send{"hello"}});
    }

    /** A whole session. */
    Outcome visit(ScriptedServer& server, Security security, const char* host = kResumedHost) {
        const std::size_t earlier = server.connections();
        const Outcome outcome = openEncrypted(server, security, host);
        if (outcome == Outcome::Done) {
            EXPECT_EQ(takeAll(), "hello");
        }
        connection.close();
        EXPECT_TRUE(server.waitForEndOf(earlier + 1));
        return outcome;
    }

    /** Whether the connection, by its number from 0, went on with the keys of an earlier one. */
    static bool resumed(const ScriptedServer& server, std::size_t number) {
        return server.tls(number).resumed;
    }
};

TEST_P(Resumption, SavesTheSecondConnectionTheHandshake) {
    for (const Security security : kEncrypting) {
        ScriptedServer server(hello(identity()));
        for (std::size_t number = 0; number < 4; ++number) {
            ASSERT_EQ(visit(server, security), Outcome::Done);
            EXPECT_EQ(resumed(server, number), number > 0) << number;
            EXPECT_EQ(connection.protection().serverProven, transport::mustBeProven(security));
            EXPECT_FALSE(connection.protection().encryption.isEmpty());
            EXPECT_EQ(server.tls(number).serverName, kResumedHost);
        }
    }
}

TEST_P(Resumption, IsDoneWithoutWhereTheServerGivesNoTickets) {
    ScriptedServer server(hello(identity(false)));
    for (std::size_t number = 0; number < 3; ++number) {
        ASSERT_EQ(visit(server, Security::FromTheStart), Outcome::Done);
        EXPECT_FALSE(resumed(server, number));
    }
}

TEST_P(Resumption, ATicketThatTheServerRefusesCostsNothingButTheHandshake) {
    for (const Security security : kEncrypting) {
        ScriptedServer server(std::vector<Conversation>{hello(identity()), hello(identity())});
        ASSERT_EQ(visit(server, security), Outcome::Done);
        ASSERT_EQ(visit(server, security), Outcome::Done);
        EXPECT_FALSE(resumed(server, 1)) << "another server's keys";
        ASSERT_EQ(visit(server, security), Outcome::Done);
        EXPECT_TRUE(resumed(server, 2)) << "the new ticket counts";
    }
}

TEST_P(Resumption, ARefusedTicketDoesNotVouchForAnotherCertificate) {
    mailserver::CertificateDescription expired = here();
    expired.notAfter = -std::chrono::minutes(1);
    const TlsIdentity selfSigned(mailserver::selfSigned(here()), {.maximum = GetParam()});
    const TlsIdentity late(support::testRoot().issue(expired), {.maximum = GetParam()});
    for (const auto& [later, outcome] :
         {std::pair(selfSigned, Outcome::IssuerNotTrusted), std::pair(late, Outcome::NotValidNow)}) {
        ScriptedServer server(std::vector<Conversation>{hello(identity()), hello(later)});
        ASSERT_EQ(visit(server, Security::FromTheStart), Outcome::Done);
        EXPECT_EQ(visit(server, Security::FromTheStart), outcome);
        EXPECT_EQ(visit(server, Security::FromTheStart), outcome);
    }
}

TEST_P(Resumption, ABareNamesTicketIsNotUsedWhereTheServerHasToProveItself) {
    for (const auto& [first, second] : {std::pair(Security::WhenOffered, Security::FromTheStart),
                                        std::pair(Security::WhenOffered, Security::Demanded),
                                        std::pair(Security::FromTheStart, Security::WhenOffered),
                                        std::pair(Security::Demanded, Security::WhenOffered)}) {
        ScriptedServer server(hello(identity()));
        ASSERT_EQ(visit(server, first), Outcome::Done);
        ASSERT_EQ(visit(server, second), Outcome::Done);
        EXPECT_FALSE(resumed(server, 1));
        EXPECT_EQ(connection.protection().serverProven, transport::mustBeProven(second));
        ASSERT_EQ(visit(server, first), Outcome::Done);
        EXPECT_TRUE(resumed(server, 2)) << "each has its own";
    }
}

TEST_P(Resumption, ABareNamesSessionProvesNothing) {
    ScriptedServer server(hello(TlsIdentity(mailserver::selfSigned(here()), {.maximum = GetParam()})));
    ASSERT_EQ(visit(server, Security::WhenOffered), Outcome::Done);
    ASSERT_EQ(visit(server, Security::WhenOffered), Outcome::Done);
    EXPECT_TRUE(resumed(server, 1));
    EXPECT_EQ(visit(server, Security::FromTheStart), Outcome::IssuerNotTrusted);
    EXPECT_EQ(visit(server, Security::Demanded), Outcome::IssuerNotTrusted);
}

TEST_P(Resumption, TicketsBelongToTheNameThatWasTyped) {
    ScriptedServer server(hello(identity()));
    ASSERT_EQ(visit(server, Security::FromTheStart, kResumedHost), Outcome::Done);
    ASSERT_EQ(visit(server, Security::FromTheStart, "pop.here.test"), Outcome::Done);
    EXPECT_FALSE(resumed(server, 1)) << "another name has proven nothing";
    EXPECT_EQ(visit(server, Security::FromTheStart, "a.pop.here.test"), Outcome::OtherName);
    ASSERT_EQ(visit(server, Security::FromTheStart, "127.0.0.1"), Outcome::Done);
    EXPECT_FALSE(resumed(server, 3));
}

INSTANTIATE_TEST_SUITE_P(Versions, Resumption, testing::Values(TlsVersion::Tls12, TlsVersion::Tls13),
                         [](const auto& test) {
                             return std::string(test.param == TlsVersion::Tls12 ? "Tls12" : "Tls13");
                         });

} // namespace
