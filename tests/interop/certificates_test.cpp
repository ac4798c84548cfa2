// What real servers' certificates are taken for.

#include "tests/poplib/pop_fixture.h"
#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/dovecot_server.h"
#include "tests/support/exim_server.h"
#include "tests/support/trusted_root.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using mailserver::Authority;
using mailserver::Certificate;
using mailserver::CertificateDescription;
using std::chrono::hours;
using support::DovecotServer;
using support::EximServer;
using support::testRoot;
namespace errors = platform::errors;

CertificateDescription otherName() {
    CertificateDescription description;
    description.names = {"mail.example.org"};
    return description;
}

CertificateDescription expired(CertificateDescription description) {
    description.notBefore = -hours(48);
    description.notAfter = -hours(24);
    return description;
}

Certificate withoutIntermediate() {
    Certificate certificate = testRoot().intermediate("Between").issue(support::loopback());
    certificate.intermediatesPem.clear();
    return certificate;
}

Certificate early() {
    CertificateDescription description = support::loopback();
    description.notBefore = hours(24);
    description.notAfter = hours(48);
    return testRoot().issue(description);
}

/** What a server presents, and the number of the error that has to follow; 0 for none. */
struct Case {
    const char* name;
    Certificate certificate;
    int error;
};

std::vector<Case> cases() {
    const Authority unknown("A root that nobody knows");
    CertificateDescription forClients = support::loopback();
    forClients.purpose = mailserver::Purpose::Client;
    return {
        {"valid", testRoot().issue(support::loopback()), 0},
        {"of an intermediate", testRoot().intermediate("Between").issue(support::loopback()), 0},
        {"without the intermediate", withoutIntermediate(), errors::CertificateNotTrusted},
        {"self-signed", mailserver::selfSigned(support::loopback()), errors::CertificateNotTrusted},
        {"of an unknown root", unknown.issue(support::loopback()), errors::CertificateNotTrusted},
        {"for clients only", testRoot().issue(forClients), errors::CertificateNotTrusted},
        {"for another name", testRoot().issue(otherName()), errors::CertificateForOtherName},
        {"expired", testRoot().issue(expired(support::loopback())), errors::CertificateNotValidNow},
        {"not yet valid", early(), errors::CertificateNotValidNow},
        {"expired, for another name", testRoot().issue(expired(otherName())),
         errors::CertificateForOtherName},
        {"self-signed, expired", mailserver::selfSigned(expired(support::loopback())),
         errors::CertificateNotTrusted},
        {"of an unknown root, for another name", unknown.issue(otherName()), errors::CertificateNotTrusted},
    };
}

class CertificatesAtDovecot : public support::PopTest {
  protected:
    void SetUp() override {
        if (const std::string reason = DovecotServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }

    int logOnAt(const QString& server) {
        pop.setMailServer(server);
        const int error = logOn();
        pop.leave();
        return error;
    }
};

class CertificatesAtExim : public support::SmtpTest {
  protected:
    void SetUp() override {
        if (const std::string reason = EximServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        smtp.setHost({});
    }

    int openAt(const QString& server) {
        smtp.setHost(server);
        const int error = open();
        close();
        return error;
    }

    support::TemporaryFolder maildir;
};

TEST_F(CertificatesAtDovecot, AreCheckedWhereTheNameSaysSo) {
    support::TrustedRoot trustedRoot;
    for (const auto& [name, certificate, error] : cases()) {
        SCOPED_TRACE(name);
        const DovecotServer server(DovecotServer::Options{.certificate = certificate});
        EXPECT_EQ(logOnAt(QStringLiteral("tls://") + server.tlsAddress()), error);
        EXPECT_EQ(logOnAt(QStringLiteral("starttls://") + server.address()), error);
        EXPECT_EQ(logOnAt(server.address()), 0);
    }
}

TEST_F(CertificatesAtExim, AreCheckedWhereTheNameSaysSo) {
    support::TrustedRoot trustedRoot;
    for (const auto& [name, certificate, error] : cases()) {
        SCOPED_TRACE(name);
        const EximServer server(maildir.path(), {.certificate = certificate});
        EXPECT_EQ(openAt(QStringLiteral("tls://") + server.tlsAddress()), error);
        EXPECT_EQ(openAt(QStringLiteral("starttls://") + server.address()), error);
        EXPECT_EQ(openAt(server.address()), 0);
    }
}

TEST_F(CertificatesAtDovecot, OfARootThatIsNotNamedAreNotTrusted) {
    const DovecotServer server(DovecotServer::Options{.certificate = support::trustedCertificate()});
    EXPECT_EQ(logOnAt(QStringLiteral("tls://") + server.tlsAddress()), errors::CertificateNotTrusted);
    EXPECT_EQ(logOnAt(QStringLiteral("starttls://") + server.address()), errors::CertificateNotTrusted);
}

TEST_F(CertificatesAtDovecot, AreForTheHostAsTyped) {
    support::TrustedRoot trustedRoot;
    CertificateDescription description;
    description.names = {"localhost"};
    const DovecotServer server(DovecotServer::Options{.certificate = testRoot().issue(description)});
    const QString port = server.tlsAddress().section(u':', 1);
    EXPECT_EQ(logOnAt(QStringLiteral("tls://localhost:") + port), 0);
    EXPECT_EQ(logOnAt(QStringLiteral("TLS://LocalHost:") + port), 0);
    EXPECT_EQ(logOnAt(QStringLiteral("tls://127.0.0.1:") + port), errors::CertificateForOtherName);
}

} // namespace
