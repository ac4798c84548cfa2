// Which certificates are taken for a server's, by what the spelling of its name demands.

#include "platform/runtime_error.h"
#include "tests/transport/encryption_fixture.h"
#include "tests/transport/resolver.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using mailserver::Authority;
using mailserver::Certificate;
using mailserver::CertificateDescription;
using std::chrono::hours;
using support::kEncrypting;
using support::overTls;
using support::Script;
using support::ScriptedServer;
using support::Send;
using support::testRoot;
using support::TlsIdentity;
using support::TlsOptions;
using support::TlsVersion;
using transport::Outcome;
using transport::Security;

constexpr const char* kHost = "mail.here.test";

CertificateDescription named(std::vector<std::string> names) {
    CertificateDescription description;
    description.names = std::move(names);
    return description;
}

CertificateDescription addressed(std::vector<std::string> addresses) {
    CertificateDescription description;
    description.addresses = std::move(addresses);
    return description;
}

CertificateDescription commonlyNamed(CertificateDescription description, const char* commonName) {
    description.commonName = commonName;
    return description;
}

CertificateDescription expired(CertificateDescription description) {
    description.notBefore = -hours(2);
    description.notAfter = -hours(1);
    return description;
}

CertificateDescription notYetValid(CertificateDescription description) {
    description.notBefore = hours(1);
    return description;
}

CertificateDescription aClients(CertificateDescription description) {
    description.purpose = mailserver::Purpose::Client;
    return description;
}

CertificateDescription weaklySigned(CertificateDescription description) {
    description.weaklySigned = true;
    return description;
}

Certificate withoutIntermediate() {
    Certificate certificate = testRoot().intermediate("Between").issue(named({kHost}));
    certificate.intermediatesPem.clear();
    return certificate;
}

struct CertificateCase {
    const char* name;
    std::function<Certificate()> certificate;
    const char* host;
    /** Where the server has to prove its name. */
    Outcome outcome;
};

CertificateCase issued(const char* name, const CertificateDescription& description, const char* host,
                       Outcome outcome) {
    return {name, [description] { return testRoot().issue(description); }, host, outcome};
}

std::vector<CertificateCase> cases() {
    using enum Outcome;
    const std::string withNul("mail.here.test\0.example.org", 27);
    const CertificateDescription good = named({kHost});
    return {
        issued("Valid", good, kHost, Done),
        issued("InCapitals", named({"MAIL.Here.Test"}), "mail.HERE.test", Done),
        issued("DotAtTheEnd", good, "mail.here.test.", Done),
        issued("OneOfManyNames", named({"a.example.org", kHost}), kHost, Done),
        issued("International", named({"xn--mller-kva.here.test"}), "m\xc3\xbcller.here.test", Done),
        issued("Expired", expired(good), kHost, NotValidNow),
        issued("NotYetValid", notYetValid(good), kHost, NotValidNow),
        issued("OtherName", named({"mail.example.org"}), kHost, OtherName),
        issued("NameWithMoreInFront", named({"here.test"}), kHost, OtherName),
        issued("NoName", commonlyNamed({}, "A server"), kHost, OtherName),
        issued("CommonNameOnly", commonlyNamed({}, kHost), kHost, Done),
        issued("CommonNameBesideOthers", commonlyNamed(named({"a.example.org"}), kHost), kHost, OtherName),
        issued("Wildcard", named({"*.here.test"}), kHost, Done),
        issued("WildcardOverTwoLevels", named({"*.here.test"}), "a.mail.here.test", OtherName),
        issued("WildcardOverNoLevel", named({"*.mail.here.test"}), kHost, OtherName),
        issued("TwoWildcards", named({"*.*.test"}), kHost, OtherName),
        issued("WildcardInTheMiddle", named({"mail.*.test"}), kHost, OtherName),
        issued("WildcardAfterLetters", named({"ma*.here.test"}), kHost, OtherName),
        issued("WildcardAlone", named({"*"}), kHost, OtherName),
        issued("NulInTheName", named({withNul}), kHost, OtherName),
        issued("Address", addressed({"127.0.0.1"}), "127.0.0.1", Done),
        issued("OtherAddress", addressed({"127.0.0.2"}), "127.0.0.1", OtherName),
        issued("AddressAsAName", named({"127.0.0.1"}), "127.0.0.1", OtherName),
        issued("AddressAsACommonName", commonlyNamed({}, "127.0.0.1"), "127.0.0.1", OtherName),
        issued("AddressByAWildcard", named({"*.0.0.1"}), "127.0.0.1", OtherName),
        issued("NameForAnAddress", good, "127.0.0.1", OtherName),
        issued("AddressForAName", addressed({"127.0.0.1"}), kHost, OtherName),
        issued("WrongPurpose", aClients(good), kHost, IssuerNotTrusted),
        {"SelfSigned", [good] { return mailserver::selfSigned(good); }, kHost, IssuerNotTrusted},
        {"UnknownRoot", [good] { return Authority("Another").issue(good); }, kHost, IssuerNotTrusted},
        {"Intermediate", [good] { return testRoot().intermediate("Between").issue(good); }, kHost, Done},
        {"IntermediateMissing", withoutIntermediate, kHost, IssuerNotTrusted},
        issued("WeaklySigned", weaklySigned(good), kHost, IssuerNotTrusted),
        issued("OtherNameAndExpired", expired(named({"mail.example.org"})), kHost, OtherName),
        {"SelfSignedOtherNameAndExpired",
         [] { return mailserver::selfSigned(expired(named({"mail.example.org"}))); }, kHost,
         IssuerNotTrusted},
        {"UnknownRootAndNotYetValid", [good] { return Authority("Another").issue(notYetValid(good)); }, kHost,
         IssuerNotTrusted},
    };
}

class CertificateOf : public support::EncryptionFixture,
                      public testing::WithParamInterface<CertificateCase> {};

TEST_P(CertificateOf, AServerIsLookedAtWhereItHasToProveItsName) {
    const TlsIdentity identity(GetParam().certificate(), {.ciphers = "DEFAULT:@SECLEVEL=0"});
    ScriptedServer server(overTls(identity, Script{Send{"hello"}}));
    for (const Security security : kEncrypting) {
        SCOPED_TRACE(static_cast<int>(security));
        const bool proven = transport::mustBeProven(security);
        const Outcome expected = proven ? GetParam().outcome : Outcome::Done;
        const std::size_t earlier = server.connections();
        ASSERT_EQ(openEncrypted(server, security, GetParam().host), expected);
        if (expected == Outcome::Done) {
            EXPECT_EQ(takeAll(), "hello");
            EXPECT_EQ(connection.protection(), (transport::Protection{QStringLiteral("TLS 1.3"), proven}));
        } else {
            EXPECT_FALSE(connection.isOpen());
            EXPECT_FALSE(connection.hasBytes());
            EXPECT_EQ(connection.protection(), transport::Protection());
        }
        connection.abort();
        // Nobody who was refused is tried again, and with less demands least of all.
        EXPECT_TRUE(server.waitForEndOf(earlier + 1));
        EXPECT_EQ(server.connections(), earlier + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Certificates, CertificateOf, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

TEST(EncryptionNumbers, TellTheFaultsApart) {
    namespace errors = platform::errors;
    const auto numberOf = [](Outcome outcome) { return transport::openingErrorNumber(outcome, 1, 2); };
    EXPECT_EQ(numberOf(Outcome::IssuerNotTrusted), errors::CertificateNotTrusted);
    EXPECT_EQ(numberOf(Outcome::OtherName), errors::CertificateForOtherName);
    EXPECT_EQ(numberOf(Outcome::NotValidNow), errors::CertificateNotValidNow);
    EXPECT_EQ(numberOf(Outcome::HandshakeFailed), errors::EncryptionFailed);
    EXPECT_EQ(numberOf(Outcome::NameUnknown), errors::HostNotFound);
    EXPECT_EQ(numberOf(Outcome::Refused), errors::ConnectionRefused);
    EXPECT_EQ(numberOf(Outcome::Unreachable), errors::NetworkUnreachable);
    EXPECT_EQ(numberOf(Outcome::TimedOut), 1);
    EXPECT_EQ(numberOf(Outcome::Lost), 2);
}

class ServersName : public support::EncryptionFixture {};

TEST_F(ServersName, IsToldBeforeTheCertificateIsShownUnlessItIsAnAddress) {
    CertificateDescription description = support::loopback();
    description.names.emplace_back("*.here.test");
    for (const TlsVersion version : {TlsVersion::Tls12, TlsVersion::Tls13}) {
        const TlsIdentity identity(testRoot().issue(description), {.maximum = version});
        for (const auto& [host, shown] :
             {std::pair(kHost, kHost), std::pair("mail.here.test.", kHost),
              std::pair("m\xc3\xbcller.here.test", "xn--mller-kva.here.test"), std::pair("127.0.0.1", "")}) {
            for (const Security security : kEncrypting) {
                ScriptedServer server(overTls(identity, Script{Send{"hello"}}));
                ASSERT_EQ(openEncrypted(server, security, host), Outcome::Done) << host;
                EXPECT_EQ(takeAll(), "hello");
                EXPECT_EQ(server.tls(0).serverName, shown);
            }
        }
    }
}

TEST_F(ServersName, IsProvenOnlyByARootThatIsTrusted) {
    const support::EnvironmentVariable noBundle("SSL_CERT_FILE", "");
    ScriptedServer server(overTls(valid(), Script{Send{"hello"}}));
    EXPECT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::IssuerNotTrusted);
    const support::EnvironmentVariable noFile("SSL_CERT_FILE", "/nonexistent/bundle.pem");
    EXPECT_EQ(openEncrypted(server, Security::FromTheStart), Outcome::IssuerNotTrusted);
}

} // namespace
