#include "addresses/directory_troubles.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addresses::DirectoryEnd;
using addresses::troubleOf;
using addresses::troubleOfLogOn;
using transport::Outcome;
using Kind = DirectoryEnd::Kind;

TEST(DirectoryTroubles, OfAConnectionHaveTheNumberThatAMailServerHas) {
    const struct {
        DirectoryEnd end;
        const char* words;
    } cases[] = {
        {{Kind::NoLibrary},
         "The program's file for directories is missing. Tell the administrator. Error# 53"},
        {{Kind::NotOpened, Outcome::NameUnknown},
         "The directory server was not found. Tell the administrator. Error# 26002"},
        {{Kind::NotOpened, Outcome::Refused},
         "The directory server refused the connection. Try again later. Error# 25062"},
        {{Kind::NotOpened, Outcome::Unreachable},
         "The network cannot be reached. Check the computer's connection. Error# 25052"},
        {{Kind::NotOpened, Outcome::IssuerNotTrusted},
         "The directory server's certificate is from nobody whom this computer trusts. Tell the "
         "administrator. "
         "Error# 20322"},
        {{Kind::NotOpened, Outcome::OtherName},
         "The directory server's certificate is for another name. Tell the administrator. Error# 20323"},
        {{Kind::NotOpened, Outcome::NotValidNow},
         "The directory server's certificate is not valid today. Check this computer's date; if it is right, "
         "tell the administrator. Error# 20324"},
        {{Kind::NotOpened, Outcome::HandshakeFailed},
         "The encryption with the directory server could not be begun. Tell the administrator. Error# 20325"},
        {{Kind::NotEncrypted, Outcome::Done, 2},
         "Encryption is demanded, and the directory server does not offer it. Tell the administrator. Error# "
         "20321"},
        {{Kind::Broken}, "The connection to the directory server failed. Try again later. Error# 20302"},
        {{Kind::NotOpened, Outcome::Lost},
         "The connection to the directory server failed. Try again later. Error# 20302"},
        {{Kind::TimedOut}, "The directory server did not answer in time. Try again later. Error# 20302"},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(troubleOf(one.end), one.words);
        EXPECT_EQ(troubleOfLogOn(one.end), one.words);
    }
}

TEST(DirectoryTroubles, OfAnAnswerHaveItsResult) {
    const struct {
        int code;
        const char* words;
    } cases[] = {
        {1, "The directory server could not search, perhaps because it demands a log-on. Tell the "
            "administrator."},
        {2, "The directory server could not search. Tell the administrator."},
        {3, "The directory server broke the search off. Type more of the name."},
        {4, "The directory server broke the search off. Type more of the name."},
        {8, "The directory does not let you search. Tell the administrator."},
        {10, "The directory server names another server, which is not asked. Tell the administrator."},
        {11, "The directory server broke the search off. Type more of the name."},
        {32, "The directory does not know the search base of the settings. Tell the administrator."},
        {34, "The directory does not know the search base of the settings. Tell the administrator."},
        {48, "The directory does not let you search. Tell the administrator."},
        {50, "The directory does not let you search. Tell the administrator."},
        {51, "The directory server is busy. Try again later."},
        {52, "The directory server is busy. Try again later."},
        {53, "The directory does not let you search. Tell the administrator."},
        {80, "The directory server could not search. Tell the administrator."},
        {-1, "The directory server could not search. Tell the administrator."},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(troubleOf({Kind::Answered, Outcome::Done, one.code}),
                  one.words + (" (LDAP result " + std::to_string(one.code) + ")"));
    }
    EXPECT_EQ(troubleOf({Kind::Answered}), "");
}

TEST(DirectoryTroubles, OfALogOnTellARefusedPasswordFromOneThatIsNotTaken) {
    EXPECT_EQ(troubleOfLogOn({Kind::Answered, Outcome::Done, 49}),
              "The directory refused your name or password. Tell the administrator. (LDAP result 49)");
    EXPECT_EQ(troubleOfLogOn({Kind::Answered, Outcome::Done, 53}),
              "The directory does not let you log on. Tell the administrator. (LDAP result 53)");
}

} // namespace
