// The exchange of each mechanism with an SMTP server, played from dialogues without a network.

#include "components/sasl/base64.h"
#include "tests/sasl/fixed_random.h"
#include "tests/smtplib/log_on_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using smtplib::Account;
using smtplib::Channel;
using support::expectError;
using support::kMail;
using support::kRcpt;
using support::kTaken;
using support::Lines;
using support::offering;
using support::operator+;
using support::SmtpDialogue;
namespace errors = platform::errors;

constexpr const char* kPlain = "C AUTH PLAIN AGJvYgBzZWNyZXQ=";

// RFC 2195 section 2.
const Account kTim{"tim", "tanstaaftanstaaf", {}};
constexpr const char* kCramChallenge = "S 334 PDE4OTYuNjk3MTcwOTUyQHBvc3RvZmZpY2UucmVzdG9uLm1jaS5uZXQ+";
constexpr const char* kCramResponse = "C dGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw";

TEST(SmtpMechanism, ProvesThePasswordByCramMd5InClear) {
    const Lines proof =
        offering("S 250 AUTH PLAIN CRAM-MD5") + Lines{"C AUTH CRAM-MD5", kCramChallenge, kCramResponse};
    expectError(proof + Lines{"S 235 in"} + kTaken, 0, Channel::InClear, kTim);
    expectError(proof + Lines{"S 535 wrong"} + kRcpt + Lines{"S 550 no"}, errors::SendingLogOnRefused,
                Channel::InClearToThisComputer, kTim);
}

TEST(SmtpMechanism, GoesAsInTheExamplesOfRfc4954) {
    // Section 4.1, but without the identity to act as, which nobody needs here: its responses begin with NUL.
    const Account test{"test", "1234", {}};
    SmtpDialogue upgraded(Lines{"S 220 smtp.example.com ESMTP Server", "C EHLO [127.0.0.1]",
                                "S 250-smtp.example.com Hello client.example.com",
                                "S 250-AUTH GSSAPI DIGEST-MD5", "S 250-ENHANCEDSTATUSCODES", "S 250 STARTTLS",
                                "C STARTTLS", "S 220 Ready to start TLS", "C (encryption begins)",
                                "C EHLO [127.0.0.1]", "S 250-smtp.example.com Hello client.example.com",
                                "S 250 AUTH GSSAPI DIGEST-MD5 PLAIN",
                                "C AUTH PLAIN AHRlc3QAMTIzNA==", "S 235 2.7.0 Authentication successful"} +
                          kTaken);
    EXPECT_EQ(support::errorOfOffer(upgraded, {transport::Security::WhenOffered, false}, test), 0);
    upgraded.expectToBeSaid();
}

TEST(SmtpMechanism, ALongInitialResponseWaitsForAChallenge) {
    const Account account{std::string(200, 'u'), std::string(200, 'p'), {}};
    const std::string response =
        "C " + sasl::toBase64(std::string(1, '\0') + account.user + std::string(1, '\0') + account.password);
    expectError(offering("S 250 AUTH PLAIN") +
                    Lines{"C AUTH PLAIN", "S 334 ", response, "S 235 2.7.0 Authentication successful"} +
                    kTaken,
                0, Channel::Encrypted, account);
}

TEST(SmtpMechanism, LoginAnswersWhateverIsAsked) {
    const std::vector<std::pair<const char*, const char*>> prompts{
        {"S 334 VXNlcm5hbWU6", "S 334 UGFzc3dvcmQ6"},
        {"S 334 ", "S 334 "},
        {"S 334", "S 334"},
        {"S 334 UGFzc3dvcmQ6", "S 334 VXNlcm5hbWU6"},
        {"S 334 AP8=", "S 334 /w=="},
        {"S 334-VXNlcm5hbWU6\r\n334 VXNlcg==", "S 334 UGFzcw=="}};
    for (const auto& [first, second] : prompts) {
        expectError(offering("S 250 AUTH LOGIN") +
                        Lines{"C AUTH LOGIN", first, "C Ym9i", second, "C c2VjcmV0", "S 235 in"} + kTaken,
                    0);
    }
}

TEST(SmtpMechanism, NothingIsShownToAServerThatSpeaksNonsense) {
    for (const char* const prompt : {"S 334 Username:", "S 334 !", "S 334 VXNlcm5hbWU", "S 334 VXNl cm5h"}) {
        for (const char* const end : {"S 501 cancelled", "S 535 wrong", "S 235 in"}) {
            expectError(offering("S 250 AUTH LOGIN") + Lines{"C AUTH LOGIN", prompt, "C *", end},
                        errors::LogOnRefused);
        }
    }
    // PLAIN has nothing to be asked for once it has been said.
    expectError(offering("S 250 AUTH PLAIN") + Lines{kPlain, "S 334 bW9yZQ==", "C *", "S 501 cancelled"},
                errors::LogOnRefused);
}

TEST(SmtpMechanism, ThatIsAcceptedTooEarlyIsNone) {
    expectError(offering("S 250 AUTH CRAM-MD5") + Lines{"C AUTH CRAM-MD5", "S 235 in"}, errors::LogOnRefused);
    expectError(offering("S 250 AUTH LOGIN") + Lines{"C AUTH LOGIN", "S 334 ", "C Ym9i", "S 235 in"},
                errors::LogOnRefused);
}

TEST(SmtpMechanism, EndlessChallengesEndTheSession) {
    Lines lines = offering("S 250 AUTH CRAM-MD5") + Lines{"C AUTH CRAM-MD5", kCramChallenge, kCramResponse};
    for (int challenge = 1; challenge < 10; ++challenge) {
        lines.insert(lines.end(), {kCramChallenge, "C *"});
    }
    expectError(lines + Lines{kCramChallenge}, errors::SendingOutOfStep, Channel::InClear, kTim);
}

TEST(SmtpMechanism, AChallengeThatNoReplyCanHoldEndsTheSession) {
    const std::string endless = "S 334 " + std::string(1U << 20U, 'A');
    expectError(offering("S 250 AUTH CRAM-MD5") + Lines{"C AUTH CRAM-MD5", endless}, errors::SendingOutOfStep,
                Channel::InClear, kTim);
}

TEST(SmtpMechanism, IsLostWithTheConnection) {
    expectError(offering("S 250 AUTH PLAIN") + Lines{kPlain}, errors::SendingLost);
}

// The example of RFC 5802 section 5.
const Account kUser{"user", "pencil", {}};
constexpr const char* kClientFirst = "C AUTH SCRAM-SHA-1 biwsbj11c2VyLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdM";
constexpr const char* kServerFirst =
    "S 334 "
    "cj1meWtvK2QybGJiRmdPTlJ2OXFreGRhd0wzcmZjTkhZSlkxWlZ2V1ZzN2oscz1RU1hDUitRNnNlazhiZjkyLGk9NDA5Ng==";
constexpr const char* kClientFinal = "C "
                                     "Yz1iaXdzLHI9ZnlrbytkMmxiYkZnT05Sdjlxa3hkYXdMM3JmY05IWUpZMVpWdldWczdqLHA"
                                     "9djBYOHYzQnoyVDBDSkdiSlF5RjBYK0hJNFRzPQ==";

/** Plays SCRAM up to the client's proof, and this behind it. */
void expectScramError(const Lines& behindTheProof, int error) {
    const support::FixedRandom nonce(sasl::fromBase64("fyko+d2lbbFgONRv9qkxdawL").value_or(""));
    for (const Channel channel : {Channel::InClear, Channel::Encrypted}) {
        expectError(offering("S 250 AUTH PLAIN CRAM-MD5 SCRAM-SHA-1") +
                        Lines{kClientFirst, kServerFirst, kClientFinal} + behindTheProof,
                    error, channel, kUser);
    }
}

TEST(SmtpMechanism, ProvesThePasswordByScramFirst) {
    expectScramError(Lines{"S 334 dj1ybUY5cHFWOFM3c3VBb1pXamE0ZEpSa0ZzS1E9", "C ", "S 235 in"} + kTaken, 0);
    expectScramError(Lines{"S 535 wrong"} + kMail + Lines{"S 550 no"}, errors::SendingLogOnRefused);
}

TEST(SmtpMechanism, AServerThatDoesNotProveThatItKnowsThePasswordIsLeft) {
    for (const char* const answer :
         {"S 334 dj1BbUY5cHFWOFM3c3VBb1pXamE0ZEpSa0ZzS1E9", "S 334 !!!", "S 334 "}) {
        for (const char* const end : {"S 501 cancelled", "S 235 in"}) {
            expectScramError({answer, "C *", end}, errors::LogOnRefused);
        }
    }
    expectScramError({"S 235 in"}, errors::LogOnRefused);
}

TEST(SmtpMechanism, TooManyIterationsCountAsARefusedMechanism) {
    const support::FixedRandom nonce(sasl::fromBase64("fyko+d2lbbFgONRv9qkxdawL").value_or(""));
    const std::string first =
        "S 334 " +
        sasl::toBase64("r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,s=QSXCR+Q6sek8bf92,i=1000001");
    expectError(offering("S 250 AUTH PLAIN SCRAM-SHA-1") +
                    Lines{kClientFirst, first, "C *", "S 501 cancelled", "C AUTH PLAIN AHVzZXIAcGVuY2ls",
                          "S 235 in"} +
                    kTaken,
                0, Channel::Encrypted, kUser);
}

} // namespace
