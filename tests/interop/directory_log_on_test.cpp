// A real directory that only those may search who have logged on.

#include "tests/interop/directory_fixture.h"
#include "tests/support/occurrences.h"
#include "tests/support/recording_relay.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using addresses::DirectorySettings;
using addresses::FoundAddresses;
using addresses::makeDirectorySource;
using support::lookedUp;
using support::occurrences;
using support::SlapdOptions;
using support::SlapdServer;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/** Nobody is to be searched for who has not logged on. */
constexpr const char* kOnlyLoggedOn = "require authc\n";
constexpr const char* kMayLogOn = "access to attrs=userPassword by anonymous auth by * none\n"
                                  "access to * by users read by anonymous search\n";

using DirectoryLogOn = support::DirectoryTest;

TEST_F(DirectoryLogOn, ThatDemandsALogOnIsShownThePasswordOverAProvenConnection) {
    SlapdOptions options = withAnn();
    options.serverLines = kOnlyLoggedOn;
    options.databaseLines = kMayLogOn;
    const SlapdServer server(options);
    const support::RecordingRelay upgraded(server.address());
    for (const QString& name : {QStringLiteral("starttls://") + upgraded.address(),
                                QStringLiteral("tls://") + server.tlsAddress()}) {
        const auto source = makeDirectorySource(settingsFor(name));
        for (int times = 0; times < 2; ++times) {
            const FoundAddresses outcome = lookedUp(*source, "ann");
            EXPECT_EQ(outcome.trouble, "");
            EXPECT_THAT(outcome.found, SizeIs(1));
        }
    }
    EXPECT_EQ(occurrences(server.log(), "BIND dn=\"uid=ann,dc=example,dc=org\" method=128"), 4U);
    EXPECT_THAT(upgraded.clientBytes(), AllOf(Not(IsEmpty()), Not(HasSubstr(kPassword))));
}

TEST_F(DirectoryLogOn, ThatDemandsALogOnIsShownNothingOverAnyOtherConnection) {
    SlapdOptions options = withAnn();
    options.serverLines = kOnlyLoggedOn;
    options.databaseLines = kMayLogOn;
    const SlapdServer server(options);
    for (const QString& scheme : {QString(), QStringLiteral("plain://")}) {
        support::RecordingRelay relay(server.address());
        const FoundAddresses outcome = lookedUpAt(scheme + relay.address(), "ann");
        EXPECT_THAT(outcome.found, IsEmpty());
        EXPECT_THAT(outcome.trouble,
                    HasSubstr("The directory does not let you search. Tell the administrator."));
        EXPECT_THAT(relay.clientBytes(), AllOf(Not(IsEmpty()), Not(HasSubstr(kPassword))));
    }
    EXPECT_THAT(server.log(), Not(HasSubstr("BIND")));
}

TEST_F(DirectoryLogOn, ThatRefusesTheLogOnIsNotAskedAgain) {
    SlapdOptions options = withAnn();
    options.serverLines = kOnlyLoggedOn;
    options.databaseLines = kMayLogOn;
    const SlapdServer server(options);
    DirectorySettings settings = settingsFor(QStringLiteral("tls://") + server.tlsAddress());
    settings.password = "another secret";
    const auto source = makeDirectorySource(settings);
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(lookedUp(*source, "ann").trouble,
                  "The directory refused your name or password. Tell the administrator. (LDAP result 49)");
    }
    EXPECT_EQ(occurrences(server.log(), " BIND dn="), 1U) << server.log();
    EXPECT_THAT(server.log(), Not(HasSubstr(settings.password)));
}

TEST_F(DirectoryLogOn, IsNotLoggedOnToWithoutNeedOrWithoutAPassword) {
    const SlapdServer open(withAnn());
    EXPECT_THAT(lookedUpAt(QStringLiteral("tls://") + open.tlsAddress(), "ann").found, SizeIs(1));
    EXPECT_THAT(open.log(), Not(HasSubstr("BIND")));

    SlapdOptions options = withAnn();
    options.serverLines = kOnlyLoggedOn;
    const SlapdServer closed(options);
    DirectorySettings settings = settingsFor(QStringLiteral("tls://") + closed.tlsAddress());
    settings.password.clear();
    EXPECT_THAT(lookedUp(*makeDirectorySource(settings), "ann").trouble,
                HasSubstr("does not let you search"));
    EXPECT_THAT(closed.log(), Not(HasSubstr("BIND")));
}

} // namespace
