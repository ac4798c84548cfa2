// What the log-on asks of a POP3 server, and in which order, played from dialogues without a network.

#include "components/poplib/log_on_plan.h"
#include "components/sasl/base64.h"
#include "platform/runtime_error.h"
#include "tests/poplib/dialogue.h"
#include "tests/sasl/fixed_random.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace {

using platform::errorNumberOf;
using poplib::LogOnRefused;
using poplib::LogOnTerms;
using poplib::OpenMailbox;
using poplib::StartAgain;
using support::Dialogue;
using transport::Security;
namespace errors = platform::errors;

/** Logs on to a server that does not know CAPA. */
auto logOn(Dialogue& dialogue) {
    return poplib::logOn(dialogue, {"bob", "secret"}, {transport::Security::Never, false});
}

TEST(LogOnPlan, GivesTheTotals) {
    Dialogue dialogue{"S +OK ready", "C USER bob", "S +OK",      "C PASS secret",
                      "S +OK in",    "C STAT",     "S +OK 2 320"};
    const auto outcome = logOn(dialogue);
    ASSERT_TRUE(std::holds_alternative<OpenMailbox>(outcome));
    EXPECT_EQ(std::get<OpenMailbox>(outcome).totals.messages, 2);
    EXPECT_EQ(std::get<OpenMailbox>(outcome).totals.bytes, 320);
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, StopsWhereTheServerRefuses) {
    Dialogue name{"S +OK", "C USER bob", "S -ERR who"};
    EXPECT_EQ(std::get<poplib::LogOnRefused>(logOn(name)).text, "who");
    name.expectToBeSaid();
    Dialogue password{"S +OK", "C USER bob", "S +OK", "C PASS secret", "S -ERR [IN-USE] later"};
    EXPECT_EQ(std::get<poplib::LogOnRefused>(logOn(password)).text, "[IN-USE] later");
    password.expectToBeSaid();
}

TEST(LogOnPlan, WithoutTotalsIsNone) {
    for (const char* const answer : {"S -ERR", "S +OK none", "S +OK -1 0"}) {
        Dialogue dialogue{"S +OK", "C USER bob", "S +OK", "C PASS secret", "S +OK", "C STAT", answer};
        EXPECT_EQ(errorNumberOf([&] { static_cast<void>(logOn(dialogue)); }), errors::MailServerTrouble)
            << answer;
    }
}

const sasl::Account kBob{"bob", "secret"};

/** The number of the error of a log-on, 0 for none. */
int errorOf(Dialogue& dialogue, Security security, const sasl::Account& account = kBob) {
    return errorNumberOf([&] { static_cast<void>(poplib::logOn(dialogue, account, {security, true})); });
}

/** True when the dialogue is a log-on that succeeds. */
bool logsOn(Dialogue& dialogue, Security security, const sasl::Account& account = kBob) {
    return std::holds_alternative<OpenMailbox>(poplib::logOn(dialogue, account, {security, true}));
}

/** What the server said when it refused; "(none)" when it did not refuse. */
std::string refusalOf(Dialogue& dialogue, Security security) {
    const auto outcome = poplib::logOn(dialogue, kBob, {security, true});
    const auto* const refused = std::get_if<LogOnRefused>(&outcome);
    return refused == nullptr ? "(none)" : refused->text;
}

TEST(LogOnPlan, ShowsThePasswordInClearOnlyWhereTheServerOffersNothingBetter) {
    Dialogue dialogue{"S +OK", "C CAPA",        "S +OK", "S USER", "S SASL PLAIN LOGIN", "S .", "C USER bob",
                      "S +OK", "C PASS secret", "S +OK", "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::Never));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, AServerThatRefusesCapaIsSpokenToAsEver) {
    Dialogue dialogue{"S +OK",         "C CAPA", "S -ERR what", "C USER bob", "S +OK",
                      "C PASS secret", "S +OK",  "C STAT",      "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::WhenOffered));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, AServerThatBreaksOffAtCapaIsAskedNoMoreInANewSession) {
    for (const char* const answer : {"S rubbish", "S +OKAY"}) {
        for (const Security security : {Security::Never, Security::WhenOffered, Security::FromTheStart}) {
            Dialogue dialogue{"S +OK", "C CAPA", answer};
            const auto outcome = poplib::logOn(dialogue, kBob, {security, true});
            ASSERT_TRUE(std::holds_alternative<StartAgain>(outcome)) << answer;
            EXPECT_EQ(std::get<StartAgain>(outcome).terms.security, security);
            EXPECT_FALSE(std::get<StartAgain>(outcome).terms.asksForCapabilities);
            dialogue.expectToBeSaid();
        }
    }
    Dialogue hangUp{"S +OK", "C CAPA"};
    EXPECT_TRUE(std::holds_alternative<StartAgain>(poplib::logOn(hangUp, kBob, {})));
}

TEST(LogOnPlan, EncryptsWhereTheServerOffersItAndForgetsWhatItLearntInClear) {
    for (const Security security : {Security::WhenOffered, Security::Demanded}) {
        Dialogue dialogue{"S +OK <1.2@a>", "C CAPA",          "S +OK",
                          "S STLS",        "S SASL CRAM-MD5", "S .",
                          "C STLS",        "S +OK begin",     "C (encryption begins)",
                          "C CAPA",        "S +OK",           "S USER",
                          "S .",           "C USER bob",      "S +OK",
                          "C PASS secret", "S +OK",           "C STAT",
                          "S +OK 0 0"};
        EXPECT_TRUE(logsOn(dialogue, security));
        dialogue.expectToBeSaid();
    }
}

TEST(LogOnPlan, NeverEncryptsWhereThatIsNotWanted) {
    Dialogue dialogue{"S +OK", "C CAPA",        "S +OK", "S STLS", "S .",      "C USER bob",
                      "S +OK", "C PASS secret", "S +OK", "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::Never));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, WithoutTheDemandedEncryptionThereIsNoLogOn) {
    Dialogue notOffered{"S +OK", "C CAPA", "S +OK", "S USER", "S ."};
    Dialogue refusedCapa{"S +OK", "C CAPA", "S -ERR"};
    Dialogue brokenOff{"S +OK", "C CAPA"};
    Dialogue refused{"S +OK", "C CAPA", "S +OK", "S STLS", "S .", "C STLS", "S -ERR not now"};
    for (Dialogue* const dialogue : {&notOffered, &refusedCapa, &brokenOff, &refused}) {
        EXPECT_EQ(errorOf(*dialogue, Security::Demanded), errors::EncryptionNotOffered);
        dialogue->expectToBeSaid();
    }
}

TEST(LogOnPlan, WhoRefusesWhatHeOffersIsSpokenToInClearInANewSession) {
    Dialogue dialogue{"S +OK", "C CAPA", "S +OK", "S STLS", "S .", "C STLS", "S -ERR not now"};
    const auto outcome = poplib::logOn(dialogue, kBob, {Security::WhenOffered, true});
    ASSERT_TRUE(std::holds_alternative<StartAgain>(outcome));
    EXPECT_EQ(std::get<StartAgain>(outcome).terms.security, Security::Never);
    EXPECT_TRUE(std::get<StartAgain>(outcome).terms.asksForCapabilities);
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, ABadAnswerToStlsNeverLeadsToALogOn) {
    for (const Security security : {Security::WhenOffered, Security::Demanded}) {
        for (const char* const answer :
             {"S rubbish", "S ", "S +OK begin\r\n+OK more", "S -ERR no\r\n+OK more"}) {
            Dialogue dialogue{"S +OK", "C CAPA", "S +OK", "S STLS", "S .", "C STLS", answer};
            EXPECT_EQ(errorOf(dialogue, security), errors::EncryptionFailed) << answer;
            dialogue.expectToBeSaid();
        }
        Dialogue hangUp{"S +OK", "C CAPA", "S +OK", "S STLS", "S .", "C STLS"};
        EXPECT_EQ(errorOf(hangUp, security), errors::EncryptionFailed);
    }
}

TEST(LogOnPlan, AsksForUtf8WhereItIsOfferedAndGoesOnWhenItIsRefused) {
    for (const char* const answer : {"S +OK", "S -ERR no"}) {
        Dialogue dialogue{"S +OK",  "C CAPA", "S +OK",      "S UTF8 USER", "S .",
                          "C UTF8", answer,   "C USER bob", "S +OK",       "C PASS secret",
                          "S +OK",  "C STAT", "S +OK 0 0"};
        EXPECT_TRUE(logsOn(dialogue, Security::WhenOffered));
        dialogue.expectToBeSaid();
    }
}

// The example of RFC 5802 section 5.
const sasl::Account kUser{"user", "pencil"};
constexpr const char* kClientFirst = "C AUTH SCRAM-SHA-1 biwsbj11c2VyLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdM";
constexpr const char* kServerFirst =
    "S + cj1meWtvK2QybGJiRmdPTlJ2OXFreGRhd0wzcmZjTkhZSlkxWlZ2V1ZzN2oscz1RU1hDUitRNnNlazhiZjkyLGk9NDA5Ng==";
constexpr const char* kClientFinal = "C "
                                     "Yz1iaXdzLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdMM3JmY05IWUpZMVpWdldWczdqLHA"
                                     "9djBYOHYzQnoyVDBDSkdiSlF5RjBYK0hJNFRzPQ==";
constexpr const char* kServerFinal = "S + dj1ybUY5cHFWOFM3c3VBb1pXamE0ZEpSa0ZzS1E9";

/** The client's nonce in the example. */
support::FixedRandom nonceOfTheExample() {
    return support::FixedRandom(sasl::fromBase64("fyko+d2lbbFgONRv9qkxdawL").value_or(""));
}

TEST(LogOnPlan, ProvesThePasswordByScramFirst) {
    const support::FixedRandom nonce = nonceOfTheExample();
    Dialogue dialogue{"S +OK", "C CAPA",     "S +OK",      "S USER",     "S SASL PLAIN CRAM-MD5 SCRAM-SHA-1",
                      "S .",   kClientFirst, kServerFirst, kClientFinal, kServerFinal,
                      "C ",    "S +OK",      "C STAT",     "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::Never, kUser));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, AServerThatDoesNotProveThatItKnowsThePasswordIsLeft) {
    const char* const wrongSignature = "S + dj1BbUY5cHFWOFM3c3VBb1pXamE0ZEpSa0ZzS1E9";
    for (const char* const answer : {wrongSignature, "S + !!!", "S + "}) {
        const support::FixedRandom nonce = nonceOfTheExample();
        Dialogue dialogue{"S +OK", "C CAPA",          "S +OK",      "S USER",     "S SASL SCRAM-SHA-1",
                          "S .",   kClientFirst,      kServerFirst, kClientFinal, answer,
                          "C *",   "S -ERR cancelled"};
        EXPECT_EQ(errorOf(dialogue, Security::FromTheStart, kUser), errors::LogOnRefused) << answer;
        dialogue.expectToBeSaid();
    }
    const support::FixedRandom nonce = nonceOfTheExample();
    Dialogue noProof{"S +OK", "C CAPA",     "S +OK",      "S USER",     "S SASL SCRAM-SHA-1",
                     "S .",   kClientFirst, kServerFirst, kClientFinal, "S +OK logged on"};
    EXPECT_EQ(errorOf(noProof, Security::FromTheStart, kUser), errors::LogOnRefused);
    noProof.expectToBeSaid();
}

TEST(LogOnPlan, OnceTheServerHasSeenAProofARefusalIsFinal) {
    const support::FixedRandom nonce = nonceOfTheExample();
    for (const char* const answer : {"S -ERR no", "S -ERR [AUTH] no"}) {
        Dialogue dialogue{"S +OK", "C CAPA",     "S +OK",      "S USER",     "S SASL CRAM-MD5 SCRAM-SHA-1",
                          "S .",   kClientFirst, kServerFirst, kClientFinal, answer};
        const auto outcome = poplib::logOn(dialogue, kUser, {Security::Never, true});
        EXPECT_TRUE(std::holds_alternative<LogOnRefused>(outcome)) << answer;
        dialogue.expectToBeSaid();
    }
}

TEST(LogOnPlan, AMechanismRefusedWithoutAReasonMakesRoomForTheNext) {
    const support::FixedRandom nonce = nonceOfTheExample();
    Dialogue dialogue{
        "S +OK",      "C CAPA",           "S +OK",       "S USER", "S SASL SCRAM-SHA-1", "S .",
        kClientFirst, "S -ERR not known", "C USER user", "S +OK",  "C PASS pencil",      "S +OK",
        "C STAT",     "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::FromTheStart, kUser));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, AMechanismRefusedWithAResponseCodeIsTheEnd) {
    const support::FixedRandom nonce = nonceOfTheExample();
    Dialogue dialogue{"S +OK",
                      "C CAPA",
                      "S +OK",
                      "S USER",
                      "S SASL SCRAM-SHA-1",
                      "S .",
                      kClientFirst,
                      "S -ERR [SYS/TEMP] later"};
    const auto outcome = poplib::logOn(dialogue, kUser, {Security::FromTheStart, true});
    ASSERT_TRUE(std::holds_alternative<LogOnRefused>(outcome));
    EXPECT_EQ(std::get<LogOnRefused>(outcome).text, "[SYS/TEMP] later");
}

TEST(LogOnPlan, TooManyIterationsCountAsARefusedMechanism) {
    const support::FixedRandom nonce = nonceOfTheExample();
    const std::string first =
        "S + " + sasl::toBase64("r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,s=QSXCR+Q6sek8bf92,i=1000001");
    Dialogue dialogue{"S +OK",         "C CAPA", "S +OK",  "S USER",           "S SASL SCRAM-SHA-1", "S .",
                      kClientFirst,    first,    "C *",    "S -ERR cancelled", "C USER user",        "S +OK",
                      "C PASS pencil", "S +OK",  "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::FromTheStart, kUser));
    dialogue.expectToBeSaid();
}

// RFC 2195 section 2.
constexpr const char* kCramChallenge = "S + PDE4OTYuNjk3MTcwOTUyQHBvc3RvZmZpY2UucmVzdG9uLm1jaS5uZXQ+";
constexpr const char* kCramResponse = "C dGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw";
const sasl::Account kTim{"tim", "tanstaaftanstaaf"};

TEST(LogOnPlan, ProvesThePasswordByCramMd5InClear) {
    Dialogue dialogue{"S +OK",  "C CAPA",          "S +OK",        "S USER",      "S SASL PLAIN CRAM-MD5",
                      "S .",    "C AUTH CRAM-MD5", kCramChallenge, kCramResponse, "S +OK",
                      "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::Never, kTim));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, AWrongPasswordThatWasHiddenIsNotShownAfterwards) {
    Dialogue dialogue{"S +OK <1.2@a>", "C CAPA",          "S +OK",        "S USER",      "S SASL CRAM-MD5",
                      "S .",           "C AUTH CRAM-MD5", kCramChallenge, kCramResponse, "S -ERR wrong"};
    const auto outcome = poplib::logOn(dialogue, kTim, {Security::WhenOffered, true});
    EXPECT_TRUE(std::holds_alternative<LogOnRefused>(outcome));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, ProvesThePasswordByApopWhereTheGreetingHasATimestamp) {
    // The example of RFC 1939 section 7. CAPA is not needed for it.
    const std::string_view greeting = "S +OK POP3 server ready <1896.697170952@dbc.mtview.ca.us>";
    const std::string_view proof = "C APOP mrose c4c9334bac560ecc979e58001b3e22fb";
    Dialogue dialogue{greeting, "C CAPA", "S -ERR", proof, "S +OK", "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::WhenOffered, {"mrose", "tanstaaf"}));
    dialogue.expectToBeSaid();
    Dialogue refused{greeting, "C CAPA", "S -ERR", proof, "S -ERR wrong"};
    const auto outcome = poplib::logOn(refused, {"mrose", "tanstaaf"}, {});
    EXPECT_TRUE(std::holds_alternative<LogOnRefused>(outcome));
    refused.expectToBeSaid();
}

TEST(LogOnPlan, AGreetingWhoseTimestampIsNoMessageIdOffersNoApop) {
    Dialogue dialogue{"S +OK <ready>", "C CAPA", "S -ERR", "C USER bob", "S +OK",
                      "C PASS secret", "S +OK",  "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::WhenOffered));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, UsesPlainWhereAnEncryptedServerOffersNoUser) {
    Dialogue dialogue{"S +OK", "C CAPA", "S +OK",    "S SASL PLAIN", "S .", "C AUTH PLAIN AGJvYgBzZWNyZXQ=",
                      "S +OK", "C STAT", "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::FromTheStart));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, ALongInitialResponseWaitsForAChallenge) {
    const sasl::Account account{std::string(100, 'u'), std::string(100, 'p')};
    const std::string response =
        "C " + sasl::toBase64(std::string(1, '\0') + account.user + std::string(1, '\0') + account.password);
    Dialogue dialogue{"S +OK", "C CAPA", "S +OK", "S SASL PLAIN", "S .",      "C AUTH PLAIN",
                      "S + ",  response, "S +OK", "C STAT",       "S +OK 0 0"};
    EXPECT_TRUE(logsOn(dialogue, Security::FromTheStart, account));
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, EndlessChallengesEndTheSession) {
    std::vector<std::string_view> lines{"S +OK",           "C CAPA", "S +OK",
                                        "S SASL CRAM-MD5", "S .",    "C AUTH CRAM-MD5"};
    lines.insert(lines.end(), {kCramChallenge, kCramResponse});
    for (int challenge = 1; challenge < 10; ++challenge) {
        lines.insert(lines.end(), {kCramChallenge, "C *"});
    }
    lines.push_back(kCramChallenge);
    Dialogue dialogue(lines);
    EXPECT_EQ(errorOf(dialogue, Security::Never, kTim), errors::MailServerTrouble);
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, ARefusalTellsWhetherThePasswordWasInClear) {
    for (const Security security : {Security::Never, Security::FromTheStart}) {
        Dialogue dialogue{"S +OK", "C CAPA", "S -ERR", "C USER bob", "S -ERR [AUTH] Plaintext disallowed"};
        const auto outcome = poplib::logOn(dialogue, kBob, {security, true});
        ASSERT_TRUE(std::holds_alternative<LogOnRefused>(outcome));
        EXPECT_EQ(std::get<LogOnRefused>(outcome).inClear, security == Security::Never);
    }
    Dialogue dialogue{"S +OK", "C CAPA", "S -ERR", "C USER bob", "S -ERR who"};
    EXPECT_EQ(refusalOf(dialogue, Security::WhenOffered), "who");
}

} // namespace
