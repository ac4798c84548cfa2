// What the log-on asks of an SMTP server, and what the server's answers to it and to the message behind it
// come to, played from dialogues without a network.

#include "tests/smtplib/log_on_lines.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using smtplib::Account;
using smtplib::Channel;
using support::expectError;
using support::kBobOfExample;
using support::kData;
using support::kMail;
using support::kRcpt;
using support::kTaken;
using support::Lines;
using support::offering;
using support::operator+;
using support::SmtpDialogue;
using testing::ElementsAre;
namespace errors = platform::errors;

// AUTH PLAIN with both names of kBobOfExample.
constexpr const char* kPlanPlain = "C AUTH PLAIN AGJvYgBzZWNyZXQ=";
constexpr const char* kOtherPlain = "C AUTH PLAIN AGJvYkBleGFtcGxlLm9yZwBzZWNyZXQ=";

/** The mechanisms that are tried when the server refuses each, in this order. */
std::vector<std::string> mechanismsTried(Channel channel, std::string_view auth) {
    Lines lines = offering(auth);
    for (int tries = 0; tries < 6; ++tries) {
        lines.insert(lines.end(), {"C whatever it is", "S 504 not known"});
    }
    SmtpDialogue dialogue(lines);
    EXPECT_EQ(support::errorOfOffer(dialogue, support::termsOf(channel), support::kBob),
              errors::SenderRefused)
        << "504 to MAIL";
    std::vector<std::string> mechanisms;
    for (const std::string& line : dialogue.sent()) {
        if (line.starts_with("AUTH ")) {
            mechanisms.push_back(line.substr(5, line.find(' ', 5) - 5));
        }
    }
    return mechanisms;
}

TEST(SmtpLogOn, TriesMechanismsInTheOrderOfTheChannel) {
    const std::string_view all =
        "S 250 AUTH XOAUTH2 LOGIN PLAIN DIGEST-MD5 CRAM-MD5 SCRAM-SHA-1 SCRAM-SHA-256 EXTERNAL GSSAPI";
    EXPECT_THAT(mechanismsTried(Channel::InClear, all),
                ElementsAre("SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5"));
    EXPECT_THAT(mechanismsTried(Channel::InClearToThisComputer, all),
                ElementsAre("SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN", "LOGIN"));
    EXPECT_THAT(mechanismsTried(Channel::Encrypted, all),
                ElementsAre("SCRAM-SHA-256", "SCRAM-SHA-1", "PLAIN", "LOGIN", "CRAM-MD5"));
    EXPECT_THAT(mechanismsTried(Channel::Encrypted, "S 250 AUTH LOGIN PLAIN PLAIN LOGIN"),
                ElementsAre("PLAIN", "LOGIN"));
}

TEST(SmtpLogOn, IsNotTriedWhereNothingMayBeUsed) {
    for (const char* const auth : {"S 250 AUTH PLAIN LOGIN", "S 250 AUTH XOAUTH2 GSSAPI", "S 250 AUTH"}) {
        expectError(offering(auth) + kTaken, 0, Channel::InClear);
    }
    expectError(offering("S 250 AUTH XOAUTH2") + kTaken, 0);
    expectError(offering("S 250 HELP") + kData + Lines{"S 550 no"}, errors::DataRefused);
    expectError(offering("S 250 AUTH PLAIN") + kTaken, 0, Channel::Encrypted, {});
}

TEST(SmtpLogOn, ReadsTheOfferOfOldAndInAnyCase) {
    for (const char* const auth :
         {"S 250 AUTH=PLAIN LOGIN", "S 250 AUTH=LOGIN PLAIN", "S 250 auth=Plain", "S 250 Auth plain",
          "S 250 AUTH  LOGIN   PLAIN ", "S 250 AUTH =PLAIN", "S 250 AUTH LOGIN=PLAIN"}) {
        expectError(offering(auth) + Lines{kPlanPlain, "S 235 in"} + kTaken, 0);
    }
}

TEST(SmtpLogOn, AMechanismThatIsRefusedMakesRoomForTheNext) {
    for (const char* const answer : {"S 504 not known", "S 534 too weak", "S 538 encrypt first"}) {
        expectError(offering("S 250 AUTH PLAIN LOGIN") +
                        Lines{kPlanPlain, answer, "C AUTH LOGIN", "S 334 VXNlcm5hbWU6", "C Ym9i",
                              "S 334 UGFzc3dvcmQ6", "C c2VjcmV0", "S 235 in"} +
                        kTaken,
                    0);
    }
}

TEST(SmtpLogOn, ThatIsRefusedIsTriedByNoOtherMechanism) {
    for (const char* const answer :
         {"S 535 wrong", "S 535-5.7.8 wrong\r\n535 name", "S 550 no", "S 500 what?"}) {
        expectError(offering("S 250 AUTH PLAIN LOGIN CRAM-MD5") + Lines{kPlanPlain, answer} + kTaken, 0);
    }
}

TEST(SmtpLogOn, ThatIsRefusedIsTriedOnceWithTheOtherName) {
    const Lines refused = offering("S 250 AUTH PLAIN LOGIN") + Lines{kPlanPlain, "S 535 wrong", kOtherPlain};
    expectError(refused + Lines{"S 235 in"} + kTaken, 0, Channel::Encrypted, kBobOfExample);
    expectError(refused + Lines{"S 535 wrong"} + kTaken, 0, Channel::Encrypted, kBobOfExample);
    expectError(refused + Lines{"S 535 wrong"} + kMail + Lines{"S 550 no"}, errors::SendingLogOnRefused,
                Channel::Encrypted, kBobOfExample);
    expectError(refused + Lines{"S 454 later"} + kMail + Lines{"S 550 no"}, errors::SendingLogOnRefusedForNow,
                Channel::Encrypted, kBobOfExample);
    // It is another try for the password: no other mechanism is one more.
    expectError(
        refused + Lines{"S 504 no"} +
            Lines{"C AUTH LOGIN", "S 334 ", "C Ym9iQGV4YW1wbGUub3Jn", "S 334 ", "C c2VjcmV0", "S 535 wrong"} +
            kTaken,
        0, Channel::Encrypted, kBobOfExample);
}

TEST(SmtpLogOn, AHangUpAtTheOtherNameIsARefusal) {
    const Lines refused = offering("S 250 AUTH PLAIN") + Lines{kPlanPlain, "S 535 wrong", kOtherPlain};
    expectError(refused, errors::SendingLogOnRefused, Channel::Encrypted, kBobOfExample);
    expectError(refused + Lines{"S 421 enough"}, errors::SendingLogOnRefusedForNow, Channel::Encrypted,
                kBobOfExample);
}

TEST(SmtpLogOn, HasNoOtherNameToTryWhereThatIsTheSameOrTheRefusalIsForNow) {
    const Lines offered = offering("S 250 AUTH PLAIN");
    expectError(offered + Lines{kPlanPlain, "S 535 wrong"} + kTaken, 0, Channel::Encrypted,
                {"bob", "secret", "bob"});
    expectError(offered + Lines{kPlanPlain, "S 454 later"} + kTaken, 0, Channel::Encrypted, kBobOfExample);
    expectError(offered + Lines{kPlanPlain, "S 504 no"} + kTaken, 0, Channel::Encrypted, kBobOfExample);
    expectError(offered + Lines{kPlanPlain, "S 235 in"} + kTaken, 0, Channel::Encrypted, kBobOfExample);
}

struct Answers {
    const char* name;
    /** The answer to AUTH PLAIN. */
    const char* logOn;
    /** What is said from MAIL on. */
    Lines message;
    int error;
};

const std::vector<Answers>& answers() {
    static const std::vector<Answers> table{
        {"RefusedAndTaken", "S 535 wrong", kTaken, 0},
        {"RefusedAndSenderRefused", "S 535 wrong", kMail + Lines{"S 550 no"}, errors::SendingLogOnRefused},
        {"RefusedAndLogOnDemanded", "S 535 wrong", kMail + Lines{"S 530 log on"},
         errors::SendingLogOnRefused},
        {"RefusedAndSenderRefusedForNow", "S 535 wrong", kMail + Lines{"S 450 later"},
         errors::SendingLogOnRefusedForNow},
        {"RefusedAndRecipientRefused", "S 535 wrong", kRcpt + Lines{"S 550 relay denied"},
         errors::SendingLogOnRefused},
        {"RefusedAndRecipientRefusedForNow", "S 535 wrong", kRcpt + Lines{"S 450 later"},
         errors::SendingLogOnRefusedForNow},
        {"RefusedAndDataRefused", "S 535 wrong", kData + Lines{"S 554 no"}, errors::DataRefused},
        {"RefusedAndTooLarge", "S 535 wrong", kMail + Lines{"S 552 too large"}, errors::MessageTooLarge},
        {"RefusedAndHungUp", "S 535 wrong", kMail, errors::SendingLogOnRefused},
        {"RefusedAndServiceEnds", "S 535 wrong", kMail + Lines{"S 421 bye"},
         errors::SendingLogOnRefusedForNow},
        {"RefusedAndHungUpAtTheRecipient", "S 535 wrong", kRcpt, errors::SendingLost},
        {"RefusedForNowAndTaken", "S 454 later", kTaken, 0},
        {"RefusedForNowAndSenderRefused", "S 454 later", kMail + Lines{"S 530 log on"},
         errors::SendingLogOnRefusedForNow},
        {"RefusedForNowAndRecipientRefused", "S 454 later", kRcpt + Lines{"S 550 no"},
         errors::SendingLogOnRefusedForNow},
        {"RefusedForNowAndHungUp", "S 454 later", kMail, errors::SendingLogOnRefusedForNow},
        {"PasswordTransition", "S 432 change it", kMail + Lines{"S 550 no"},
         errors::SendingLogOnRefusedForNow},
        {"ServiceEnds", "S 421 shutting down", {}, errors::SendingLogOnRefusedForNow},
        {"InAndSenderRefused", "S 235 in", kMail + Lines{"S 550 5.7.1 not yours"}, errors::SenderRefused},
        {"InAndSenderRefusedForNow", "S 235 in", kMail + Lines{"S 451 later"}, errors::SenderRefusedForNow},
        {"InAndRecipientRefused", "S 235 in", kRcpt + Lines{"S 554 5.7.0 no"}, errors::RecipientRefused},
        {"InAndLogOnDemanded", "S 235 in", kMail + Lines{"S 530 log on"}, errors::SenderRefused},
        {"InAndHungUp", "S 235 in", kMail, errors::SendingLost},
        {"InAndTooLarge", "S 235 in", kMail + Lines{"S 534 too large"}, errors::MessageTooLarge},
    };
    return table;
}

class SmtpLogOnAnswers : public testing::TestWithParam<Answers> {};

TEST_P(SmtpLogOnAnswers, ComeToANumber) {
    expectError(offering("S 250 AUTH LOGIN PLAIN") + Lines{kPlanPlain, GetParam().logOn} + GetParam().message,
                GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(Answers, SmtpLogOnAnswers, testing::ValuesIn(answers()),
                         [](const auto& test) { return test.param.name; });

TEST(SmtpLogOn, ThatIsDemandedAndImpossibleHasANumberOfItsOwn) {
    const std::vector<Lines> noWay{
        offering("S 250 AUTH PLAIN LOGIN"),
        offering("S 250 AUTH XOAUTH2"),
        offering("S 250 HELP"),
        {"S 220 mail", "C EHLO [127.0.0.1]", "S 500 what?", "C HELO [127.0.0.1]", "S 250 mail"}};
    for (const Lines& session : noWay) {
        for (const char* const answer :
             {"S 530 Authentication required", "S 530 5.7.0 log on", "S 550 5.7.1 relaying denied",
              "S 554 5.7.0 no", "S 554 5.7.1 no", "S 550-5.7.1 two\r\n550 5.7.1 lines"}) {
            expectError(session + kMail + Lines{answer}, errors::SendingLogOnImpossible, Channel::InClear);
            expectError(session + kRcpt + Lines{answer}, errors::SendingLogOnImpossible, Channel::InClear);
        }
        for (const char* const answer : {"S 550 no", "S 550 5.1.0 no", "S 551 5.7.1 no", "S 554 no"}) {
            expectError(session + kMail + Lines{answer}, errors::SenderRefused, Channel::InClear);
            expectError(session + kRcpt + Lines{answer}, errors::RecipientRefused, Channel::InClear);
        }
        expectError(session + kMail + Lines{"S 450 4.7.1 later"}, errors::SenderRefusedForNow,
                    Channel::InClear);
    }
}

TEST(SmtpLogOn, EncryptionThatAServerDemandsIsMissedOnlyInClear) {
    const Lines demand{"S 530 5.7.0 Must issue a STARTTLS command first"};
    for (const Channel channel : {Channel::InClear, Channel::InClearToThisComputer}) {
        expectError(offering("S 250 HELP") + kMail + demand, errors::EncryptionNotOffered, channel);
        expectError(offering("S 250 AUTH XOAUTH2") + kRcpt + demand, errors::EncryptionNotOffered, channel);
    }
    expectError(offering("S 250 HELP") + kMail + demand, errors::SendingLogOnImpossible);
    // Some offer AUTH and demand encryption for it.
    expectError(offering("S 250 AUTH PLAIN") + Lines{kPlanPlain} + demand + kMail + demand,
                errors::EncryptionNotOffered, Channel::InClearToThisComputer);
}

TEST(SmtpLogOn, WhatIsTooLargeIsNotAMatterOfTheLogOn) {
    for (const char* const answer : {"S 552 no", "S 534 no", "S 550 5.3.4 no", "S 554-5.3.4 no\r\n554 no"}) {
        expectError(offering("S 250 HELP") + kMail + Lines{answer}, errors::MessageTooLarge);
        expectError(offering("S 250 AUTH PLAIN") + Lines{kPlanPlain, "S 535 no"} + kMail + Lines{answer},
                    errors::MessageTooLarge);
    }
}

} // namespace
