#include "doctor/directory_survey.h"
#include "tests/doctor/findings.h"
#include "tests/support/application.h"
#include "tests/support/scripted_server.h"
#include "tests/support/slapd_server.h"
#include "tests/support/trusted_root.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

namespace {
using doctor::Finding;
using doctor::Grade;
using doctor::Report;
using support::findingOf;
using support::findingWith;
using support::person;
using support::SlapdOptions;
using support::SlapdServer;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kPasswordOfAnn = "secret-as-can-be";

class DoctorsDirectory : public testing::Test {
  protected:
    DoctorsDirectory() { support::application(); }

    void SetUp() override {
        if (const std::string reason = SlapdServer::whyUnavailable(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }

    void survey(const QString& name, bool logsOn = true, const char* base = support::kSlapdBase) {
        using namespace std::chrono_literals;
        report = {};
        doctor::Surveys all{report, {10s, 10s, 1s}};
        all.secrets.addPassword(kPasswordOfAnn);
        const doctor::Member member{"ann", kPasswordOfAnn};
        doctor::surveyDirectory(name, QString::fromLatin1(base), logsOn ? &member : nullptr, all);
        ASSERT_EQ(report.servers.size(), 1U);
        EXPECT_FALSE(doctor::asText(report).contains(QLatin1String(kPasswordOfAnn)));
        // Mail can be sent and read without a directory.
        EXPECT_EQ(report.status(), 0);
    }

    static SlapdOptions withAnn() {
        auto certificate = support::loopback();
        certificate.notAfter = std::chrono::hours(24 * 365);
        return {.entries = person("ann", "Ann Miller", "ann@example.org", kPasswordOfAnn),
                .certificate = support::testRoot().issue(certificate)};
    }

    static SlapdOptions thatDemandsALogOn() {
        SlapdOptions options = withAnn();
        options.serverLines = "require authc\n";
        options.databaseLines = "access to attrs=userPassword by anonymous auth by * none\n"
                                "access to * by users read by anonymous search\n";
        return options;
    }

    const doctor::ServerSeen& seen() const { return report.servers.back(); }

    std::vector<Finding> met() const {
        std::vector<Finding> found;
        for (const Finding& finding : report.findings) {
            if (finding.grade == Grade::Met) {
                found.push_back(finding);
            }
        }
        return found;
    }

    support::TrustedRoot root;
    Report report;
};

TEST_F(DoctorsDirectory, AGoodOneIsToldWithAllThatItIs) {
    const SlapdServer server(withAnn());
    survey(QStringLiteral("tls://") + server.tlsAddress());
    EXPECT_THAT(met(), IsEmpty());
    EXPECT_EQ(seen().protocol, QStringLiteral("LDAP"));
    EXPECT_EQ(seen().host, QStringLiteral("127.0.0.1"));
    ASSERT_FALSE(seen().addresses.empty());
    EXPECT_TRUE(seen().addresses.front().problem.isEmpty());
    EXPECT_TRUE(seen().encryption.startsWith(QStringLiteral("TLS 1.")));
    ASSERT_TRUE(seen().certificate);
    EXPECT_TRUE(seen().certificate->isValid);
    EXPECT_TRUE(seen().milliseconds);
    EXPECT_EQ(seen().uses, QStringList(QStringLiteral("search without a log-on")));
    EXPECT_EQ(seen().logOn, QString());
    EXPECT_EQ(findingOf("Everybody finds entries", report.findings).grade, Grade::Info);
    EXPECT_THAT(server.log(), Not(HasSubstr("BIND")));
}

TEST_F(DoctorsDirectory, WithoutASchemeItIsToldWhatTheCertificateWouldDo) {
    const SlapdServer server(withAnn());
    survey(server.address());
    EXPECT_THAT(met(), IsEmpty());
    ASSERT_TRUE(seen().certificate);
    EXPECT_TRUE(seen().certificate->isValid);

    SlapdOptions inClear = withAnn();
    inClear.certificate.reset();
    const SlapdServer other(inClear);
    survey(other.address());
    EXPECT_TRUE(seen().encryption.isEmpty());
    EXPECT_EQ(findingOf("crosses the network in clear", report.findings).grade, Grade::Info);
    survey(QStringLiteral("starttls://") + other.address());
    EXPECT_EQ(findingWith(20321, met()).line, 17);
}

TEST_F(DoctorsDirectory, ACertificateThatIsNotGoodIsMetAndToldWithItsReason) {
    auto description = support::loopback();
    description.names = {"other.example.org"};
    description.addresses.clear();
    SlapdOptions options = withAnn();
    options.certificate = support::testRoot().issue(description);
    const SlapdServer server(options);
    survey(QStringLiteral("starttls://") + server.address());
    const Finding finding = findingWith(20323, met());
    EXPECT_TRUE(finding.box.startsWith(
        QStringLiteral("The directory server's certificate is for another name. Tell the administrator.")));
    ASSERT_TRUE(seen().certificate);
    EXPECT_FALSE(seen().certificate->isValid);
    EXPECT_TRUE(seen().certificate->reason.contains(QStringLiteral("it is not for 127.0.0.1")));
}

TEST_F(DoctorsDirectory, AWrongSearchBaseIsMet) {
    const SlapdServer server(withAnn());
    survey(server.address(), true, "c=us");
    const Finding finding = findingOf("The search base c=us cannot be read.", met());
    EXPECT_EQ(finding.line, 18);
    EXPECT_TRUE(finding.box.contains(QStringLiteral("does not know the search base")));
}

TEST_F(DoctorsDirectory, WhereNobodyIsFoundThatIsMet) {
    SlapdOptions options;
    const SlapdServer server(options);
    survey(server.address());
    EXPECT_EQ(findingOf("Nobody with an address (mail) is found", met()).line, 18);
}

TEST_F(DoctorsDirectory, ADemandedLogOnIsTriedWhereTheProgramWouldAndSomebodyLogsOn) {
    const SlapdServer server(thatDemandsALogOn());
    const QString proven = QStringLiteral("tls://") + server.tlsAddress();
    survey(proven, false);
    EXPECT_EQ(findingOf("which was not tried", report.findings).grade, Grade::Info);
    survey(server.address());
    EXPECT_TRUE(findingOf("The server demands a log-on", met()).advice.contains(QStringLiteral("tls://")));
    EXPECT_THAT(server.log(), Not(HasSubstr("BIND")));
    survey(proven);
    EXPECT_THAT(met(), IsEmpty());
    EXPECT_EQ(seen().logOn, QStringLiteral("accepted"));
    EXPECT_EQ(seen().uses, QStringList(QStringLiteral("search behind a log-on")));
}

TEST_F(DoctorsDirectory, ARefusedLogOnIsMetAndShowsNoPassword) {
    SlapdOptions options = thatDemandsALogOn();
    options.entries = person("ann", "Ann Miller", "ann@example.org", "another secret");
    const SlapdServer server(options);
    survey(QStringLiteral("tls://") + server.tlsAddress());
    EXPECT_EQ(seen().logOn, QStringLiteral("refused"));
    EXPECT_TRUE(findingOf("The log-on as uid=ann,dc=example,dc=org has failed.", met())
                    .box.contains(QStringLiteral("(LDAP result 49)")));
}

TEST_F(DoctorsDirectory, OneThatIsNotThereIsMet) {
    const support::RefusingPort refusing;
    survey(refusing.address());
    EXPECT_EQ(findingWith(25062, met()).line, 17);
    EXPECT_FALSE(seen().milliseconds);
    survey(QStringLiteral("ldap://directory.example.org"));
    EXPECT_EQ(findingWith(26002, met()).line, 17);
    support::ScriptedServer mail(support::Script{support::Send{"+OK ready\r\n"}, support::HoldSilent{}});
    survey(QStringLiteral("plain://") + mail.address());
    EXPECT_EQ(findingWith(20302, met()).line, 18);
}

} // namespace
