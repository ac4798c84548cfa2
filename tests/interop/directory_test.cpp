// Addresses that are looked up in a real directory.

#include "tests/interop/directory_fixture.h"
#include "tests/support/environment.h"
#include "tests/support/occurrences.h"

#include <QDir>
#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <sys/stat.h>

namespace {

using addresses::DirectorySettings;
using addresses::FoundAddress;
using addresses::FoundAddresses;
using addresses::makeDirectorySource;
using support::EnvironmentVariable;
using support::lookedUp;
using support::occurrences;
using support::person;
using support::persons;
using support::SlapdOptions;
using support::SlapdServer;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Directory = support::DirectoryTest;

TEST_F(Directory, IsSearchedUnderEverySpelling) {
    const SlapdServer server(withAnn());
    for (const QString& name :
         {QStringLiteral("plain://") + server.address(), server.address(),
          QStringLiteral("starttls://") + server.address(), QStringLiteral("tls://") + server.tlsAddress()}) {
        const FoundAddresses outcome = lookedUpAt(name, "mil ANN");
        EXPECT_EQ(outcome.trouble, "") << name.toStdString();
        EXPECT_THAT(outcome.found, ElementsAre(found("Ann Miller", "ann@example.org")));
        EXPECT_FALSE(outcome.more);
    }
    // Not where nothing is to be encrypted.
    EXPECT_EQ(occurrences(server.log(), "STARTTLS"), 2U) << server.log();
}

TEST_F(Directory, FindsWordsInEveryNameAndNothingElse) {
    const SlapdServer server(
        {.entries = person("amiller", "Ann Miller", "office@example.org", {},
                           "givenName: Annabel\ndisplayName: Ann M. Miller\ntitle: Hidden\n") +
                    person("bob", "Bob *star* (away)", "bob@example.org") +
                    "dn: uid=nomail,dc=example,dc=org\nobjectClass: inetOrgPerson\ncn: Ann Nomail\nsn: "
                    "Nomail\nuid: nomail\n\n"});
    const FoundAddress ann = found("Ann M. Miller", "office@example.org");
    for (const char* typed : {"ann", "amill", "Annabel", "M. m", "ice@exa", "miller ann"}) {
        EXPECT_THAT(lookedUpAt(server.address(), typed).found, ElementsAre(ann)) << typed;
    }
    for (const char* typed : {"hidden", "nomail", "a*r", "*)(uid=*", "ann bob", "zzz"}) {
        const FoundAddresses outcome = lookedUpAt(server.address(), typed);
        EXPECT_THAT(outcome.found, IsEmpty()) << typed;
        EXPECT_EQ(outcome.trouble, "") << typed;
    }
    EXPECT_THAT(lookedUpAt(server.address(), "*star* (a").found,
                ElementsAre(found("Bob *star* (away)", "bob@example.org")));
}

TEST_F(Directory, IsNotAskedWhereNothingWasTyped) {
    const SlapdServer server(withAnn());
    const FoundAddresses outcome = lookedUpAt(server.address(), " \t ");
    EXPECT_THAT(outcome.found, IsEmpty());
    EXPECT_EQ(outcome.trouble, "");
    EXPECT_THAT(server.log(), Not(HasSubstr("SRCH")));
}

TEST_F(Directory, WithMoreThanFiftyEntriesShowsFiftyAndSaysSo) {
    const SlapdServer server({.entries = persons(1, 60)});
    const FoundAddresses sixty = lookedUpAt(server.address(), "person");
    EXPECT_THAT(sixty.found, SizeIs(50));
    EXPECT_TRUE(sixty.more);
    EXPECT_EQ(sixty.trouble, "");
    const FoundAddresses eleven = lookedUpAt(server.address(), "person1");
    EXPECT_THAT(eleven.found, SizeIs(11));
    EXPECT_FALSE(eleven.more);
}

TEST_F(Directory, WithALimitOfItsOwnShowsWhatItGives) {
    const SlapdServer server({.entries = persons(1, 20), .databaseLines = "sizelimit 7\n"});
    const FoundAddresses outcome = lookedUpAt(server.address(), "person");
    EXPECT_THAT(outcome.found, SizeIs(7));
    EXPECT_TRUE(outcome.more);
    EXPECT_EQ(outcome.trouble, "");
}

TEST_F(Directory, WithoutTheSearchBaseIsATrouble) {
    const SlapdServer server(withAnn());
    for (const auto& [base, code] : {std::pair{"dc=nowhere", "32"}, std::pair{"no name", "34"}}) {
        DirectorySettings settings = settingsFor(server.address());
        settings.base = base;
        EXPECT_EQ(lookedUp(*makeDirectorySource(settings), "ann").trouble,
                  std::string("The directory does not know the search base of the settings. Tell the "
                              "administrator. (LDAP result ") +
                      code + ")");
    }
}

TEST_F(Directory, ThatNamesAnotherServerIsNotFollowed) {
    const SlapdServer other({.entries = persons(1, 3)});
    const std::string url = "ldap://" + other.address().toStdString();
    const SlapdServer server({.entries = persons(4, 5) + "dn: ou=away," + support::kSlapdBase +
                                         "\nobjectClass: referral\nobjectClass: extensibleObject\nou: "
                                         "away\nref: " +
                                         url + "/" + support::kSlapdBase + "\n\n",
                              .serverLines = "referral " + url + "\n"});
    EXPECT_THAT(lookedUpAt(server.address(), "person").found, SizeIs(2));
    DirectorySettings settings = settingsFor(server.address());
    settings.base = "dc=elsewhere";
    EXPECT_THAT(lookedUp(*makeDirectorySource(settings), "person").trouble,
                HasSubstr("names another server, which is not asked"));
    EXPECT_THAT(other.log(), Not(HasSubstr("SRCH")));
}

TEST_F(Directory, DoesNotLookBehindAliases) {
    const SlapdServer server(
        {.entries =
             "dn: ou=people,dc=example,dc=org\nobjectClass: organizationalUnit\nou: people\n\n"
             "dn: uid=bob,ou=people,dc=example,dc=org\nobjectClass: inetOrgPerson\ncn: Bob\nsn: B\n"
             "uid: bob\nmail: bob@example.org\n\n"
             "dn: ou=here,dc=example,dc=org\nobjectClass: organizationalUnit\nou: here\n\n"
             "dn: ou=way,ou=here,dc=example,dc=org\nobjectClass: alias\nobjectClass: extensibleObject\n"
             "ou: way\naliasedObjectName: ou=people,dc=example,dc=org\n\n"});
    DirectorySettings settings = settingsFor(server.address());
    settings.base = "ou=here,dc=example,dc=org";
    const FoundAddresses outcome = lookedUp(*makeDirectorySource(settings), "bob");
    EXPECT_THAT(outcome.found, IsEmpty());
    EXPECT_EQ(outcome.trouble, "");
}

TEST_F(Directory, ProvesItsNameWhereTheSpellingDemandsIt) {
    auto otherName = support::loopback();
    otherName.names = {"other.example.org"};
    otherName.addresses.clear();
    auto expired = support::loopback();
    expired.notAfter = -std::chrono::minutes(1);
    expired.notBefore = -std::chrono::hours(2);

    const struct {
        mailserver::Certificate certificate;
        std::string trouble;
    } cases[] = {
        {support::testRoot().issue(otherName),
         "certificate is for another name. Tell the administrator. Error# 20323"},
        {support::testRoot().issue(expired), "it is right, tell the administrator. Error# 20324"},
        {mailserver::selfSigned(support::loopback()),
         "whom this computer trusts. Tell the administrator. Error# 20322"},
    };

    for (const auto& one : cases) {
        SlapdOptions options = withAnn();
        options.certificate = one.certificate;
        const SlapdServer server(options);
        for (const QString& name : {QStringLiteral("starttls://") + server.address(),
                                    QStringLiteral("tls://") + server.tlsAddress()}) {
            const FoundAddresses outcome = lookedUpAt(name, "ann");
            EXPECT_THAT(outcome.trouble, HasSubstr(one.trouble));
            EXPECT_THAT(outcome.found, IsEmpty());
        }
        EXPECT_THAT(server.log(), Not(HasSubstr("SRCH")));
        // Without a scheme nobody looks at it.
        EXPECT_THAT(lookedUpAt(server.address(), "ann").found, SizeIs(1));
        EXPECT_EQ(occurrences(server.log(), "TLS established"), 1U) << server.log();
    }
}

TEST_F(Directory, WithoutEncryptionIsAskedInClearOnlyUnderABareName) {
    SlapdOptions options = withAnn();
    options.certificate.reset();
    const SlapdServer server(options);
    EXPECT_THAT(lookedUpAt(server.address(), "ann").found, SizeIs(1));
    EXPECT_EQ(lookedUpAt(QStringLiteral("starttls://") + server.address(), "ann").trouble,
              "Encryption is demanded, and the directory server does not offer it. Tell the administrator. "
              "Error# 20321");
}

TEST_F(Directory, IsNotSpokenToAsTheLibrarysOwnSettingsSay) {
    SlapdOptions options = withAnn();
    auto expired = support::loopback();
    expired.notBefore = -std::chrono::hours(2);
    expired.notAfter = -std::chrono::minutes(1);
    options.certificate = support::testRoot().issue(expired);
    options.entries += persons(1, 5);
    const SlapdServer server(options);
    const support::TemporaryFolder folder;
    folder.write("ldaprc",
                 "TLS_REQCERT never\nURI ldap://192.0.2.1\nBASE dc=evil\nDEREF always\nSIZELIMIT 1\n"
                 "REFERRALS on\nNETWORK_TIMEOUT 1\n");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.qtPath("")));
    const EnvironmentVariable reqcert("LDAPTLS_REQCERT", "never");
    const EnvironmentVariable uri("LDAPURI", "ldap://192.0.2.1");
    const EnvironmentVariable limit("LDAPSIZELIMIT", "1");
    EXPECT_THAT(lookedUpAt(QStringLiteral("tls://") + server.tlsAddress(), "ann").trouble,
                HasSubstr("Error# 20324"));
    EXPECT_THAT(lookedUpAt(server.address(), "person").found, SizeIs(5));
    EXPECT_TRUE(QDir::setCurrent(before));
}

TEST_F(Directory, IsSearchedWithoutAFileOfTheCurrentFolder) {
    // It would read that file, too.
    const SlapdServer server(withAnn());
    const support::TemporaryFolder folder;
    // Whoever opens it waits for ever.
    ASSERT_EQ(mkfifo(folder.path("ldaprc").c_str(), 0600), 0);
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.qtPath("")));
    EXPECT_THAT(lookedUpAt(server.address(), "ann").found, SizeIs(1));
    EXPECT_TRUE(QDir::setCurrent(before));
}

TEST_F(Directory, ThatIsKilledMeanwhileIsToldAndMayComeBack) {
    auto server = std::make_unique<SlapdServer>(withAnn());
    const auto source = makeDirectorySource(settingsFor(server->address()));
    EXPECT_THAT(lookedUp(*source, "ann").found, SizeIs(1));
    server->freeze();
    bool isTold = false;
    FoundAddresses outcome;
    source->search("ann", [&](FoundAddresses told) {
        isTold = true;
        outcome = std::move(told);
    });
    support::eventsRunUntil([&, turns = 0]() mutable { return ++turns > 20; });
    EXPECT_FALSE(isTold);
    server->kill();
    EXPECT_TRUE(support::eventsRunUntil([&] { return isTold; }));
    EXPECT_THAT(outcome.trouble, HasSubstr("Try again later."));
}

TEST_F(Directory, ThatSaysNothingIsWaitedForNoLongerThanAskedFor) {
    const SlapdServer server(withAnn());
    server.freeze();
    DirectorySettings settings = settingsFor(server.address());
    settings.patience = std::chrono::milliseconds(200);
    EXPECT_EQ(lookedUp(*makeDirectorySource(settings), "ann").trouble,
              "The directory server did not answer in time. Try again later. Error# 20302");
}

} // namespace
