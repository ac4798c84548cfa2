#include "mailserver/digests.h"
#include "mailserver/sasl_dialogue.h"
#include "mailserver/sasl_mechanisms.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace mailserver {

bool operator==(const SaslMechanism::Answer& one, const SaslMechanism::Answer& other) {
    return one.outcome == other.outcome && one.challenge == other.challenge;
}

void PrintTo(const SaslMechanism::Answer& answer, std::ostream* stream) {
    *stream << static_cast<int>(answer.outcome) << " " << answer.challenge;
}

} // namespace mailserver

namespace {

using mailserver::Accounts;
using mailserver::Digest;
using mailserver::only;
using mailserver::SaslDialogue;
using mailserver::SaslMechanism;
using mailserver::SaslSettings;
using Answer = SaslMechanism::Answer;
using Outcome = SaslMechanism::Outcome;

Answer challenge(const std::string& text) {
    return {Outcome::Challenge, text};
}

const Answer kAccepted{Outcome::Accepted};
const Answer kRefused{Outcome::Refused};
const Answer kMalformed{Outcome::Malformed};

TEST(Digests, AreThoseOfTheRfcs) {
    // RFC 2202 sections 2 and 3, RFC 6070 section 2, RFC 1321 appendix A.5.
    EXPECT_EQ(mailserver::lowerHex(mailserver::hmacOf(Digest::Md5, "Jefe", "what do ya want for nothing?")),
              "750c783e6ab0b503eaa86e310a5db738");
    EXPECT_EQ(mailserver::lowerHex(mailserver::hmacOf(Digest::Sha1, "Jefe", "what do ya want for nothing?")),
              "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79");
    EXPECT_EQ(mailserver::lowerHex(mailserver::stretched(Digest::Sha1, "password", "salt", 2)),
              "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957");
    EXPECT_EQ(mailserver::lowerHex(mailserver::digestOf(Digest::Md5, "abc")),
              "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Digests, Base64MustBeWhole) {
    EXPECT_EQ(mailserver::fromBase64("YWI="), "ab");
    EXPECT_EQ(mailserver::fromBase64(""), "");
    for (const char* const text : {"YWI", "YW=I", "Y W=", "YWI=====", "=", "YW\xc3=", "YWI=YWI="}) {
        EXPECT_EQ(mailserver::fromBase64(text), std::nullopt) << text;
    }
}

TEST(SaslMechanisms, PlainTakesNameAndPasswordInOneResponse) {
    const Accounts accounts = only("tim", "secret");
    const auto answerTo = [&](const std::string& response) {
        return mailserver::makeMechanism("PLAIN", accounts, {})->begin(response);
    };
    using namespace std::string_literals;
    EXPECT_EQ(answerTo("\0tim\0secret"s), kAccepted);
    EXPECT_EQ(answerTo("tim\0tim\0secret"s), kAccepted);
    EXPECT_EQ(answerTo("bob\0tim\0secret"s), kRefused);
    EXPECT_EQ(answerTo("\0tim\0Secret"s), kRefused);
    EXPECT_EQ(answerTo("\0tim"s), kMalformed);
    EXPECT_EQ(answerTo("\0tim\0secret\0"s), kMalformed);
    EXPECT_EQ(answerTo(""), kMalformed);
    const auto later = mailserver::makeMechanism("PLAIN", accounts, {});
    EXPECT_EQ(later->begin(std::nullopt), challenge(""));
    EXPECT_EQ(later->respond("\0tim\0secret"s), kAccepted);
}

TEST(SaslMechanisms, LoginAsksForTheNameUnlessItHasCome) {
    const Accounts accounts = only("tim", "secret");
    const auto asked = mailserver::makeMechanism("LOGIN", accounts, {});
    EXPECT_EQ(asked->begin(std::nullopt), challenge("Username:"));
    EXPECT_EQ(asked->respond("tim"), challenge("Password:"));
    EXPECT_EQ(asked->respond("secret"), kAccepted);
    const auto told = mailserver::makeMechanism("LOGIN", accounts, {});
    EXPECT_EQ(told->begin("tim"), challenge("Password:"));
    EXPECT_EQ(told->respond("wrong"), kRefused);
}

TEST(SaslMechanisms, CramMd5IsTheOneOfItsRfc) {
    const Accounts accounts = only("tim", "tanstaaftanstaaf");
    SaslSettings settings;
    settings.challenge = "<1896.697170952@postoffice.reston.mci.net>";
    const auto answerTo = [&](const std::string& response) {
        const auto mechanism = mailserver::makeMechanism("CRAM-MD5", accounts, settings);
        EXPECT_EQ(mechanism->begin(std::nullopt), challenge(settings.challenge));
        return mechanism->respond(response);
    };
    EXPECT_EQ(answerTo("tim b913a602c7eda7a495b4e6e7334d3890"), kAccepted);
    EXPECT_EQ(answerTo("tim b913a602c7eda7a495b4e6e7334d3891"), kRefused);
    EXPECT_EQ(answerTo("bob b913a602c7eda7a495b4e6e7334d3890"), kRefused);
    EXPECT_EQ(answerTo("tim"), kMalformed);
    EXPECT_EQ(mailserver::makeMechanism("CRAM-MD5", accounts, settings)->begin("tim"), kMalformed);
}

/** One log-on of user "user" with password "pencil", as an RFC has it. */
struct ScramExample {
    std::string mechanism;
    std::string clientNonce;
    std::string serverNonce;
    std::string salt;
    std::string proof;
    std::string signature;
};

class ScramOfAnRfc : public testing::TestWithParam<ScramExample> {
  protected:
    ScramOfAnRfc() {
        settings.nonce = GetParam().serverNonce;
        settings.salt = mailserver::fromBase64(GetParam().salt).value();
    }

    Answer begin(const std::string& message) {
        mechanism = mailserver::makeMechanism(GetParam().mechanism, accounts, settings);
        return mechanism->begin(message);
    }

    Answer beginProperly() { return begin("n,,n=user,r=" + GetParam().clientNonce); }

    std::string final(const std::string& proof) const { return "c=biws,r=" + nonce + ",p=" + proof; }

    Accounts accounts = only("user", "pencil");
    SaslSettings settings;
    std::string nonce = GetParam().clientNonce + GetParam().serverNonce;
    std::unique_ptr<SaslMechanism> mechanism;
};

TEST_P(ScramOfAnRfc, EndsWithTheServersSignature) {
    EXPECT_EQ(beginProperly(), challenge("r=" + nonce + ",s=" + GetParam().salt + ",i=4096"));
    EXPECT_EQ(mechanism->respond(final(GetParam().proof)), challenge("v=" + GetParam().signature));
    EXPECT_EQ(mechanism->respond(""), kAccepted);
}

TEST_P(ScramOfAnRfc, RefusesWhatIsWrong) {
    beginProperly();
    EXPECT_EQ(mechanism->respond(final(GetParam().signature)), kRefused);
    beginProperly();
    EXPECT_EQ(mechanism->respond("c=biws,r=" + nonce + "x,p=" + GetParam().proof), kRefused);
    begin("n,,n=nobody,r=" + GetParam().clientNonce);
    EXPECT_EQ(mechanism->respond(final(GetParam().proof)), kRefused);
    beginProperly();
    mechanism->respond(final(GetParam().proof));
    EXPECT_EQ(mechanism->respond("more"), kMalformed);
}

TEST_P(ScramOfAnRfc, RefusesWhatIsNoMessage) {
    for (const std::string message : {"", "n", "n,", "n,,", "n,,n=user", "n,,n=user,r=", "n,,m=x,n=user,r=y",
                                      "p=tls-unique,,n=user,r=y", "n,,n=us=er,r=y"}) {
        EXPECT_EQ(begin(message), kMalformed) << message;
    }
    for (const std::string message : {"", "c=biws", "c=eSws,r=x,p=y", "r=x,c=biws,p=y", "c=biws,r=x"}) {
        beginProperly();
        EXPECT_EQ(mechanism->respond(message), kMalformed) << message;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rfcs, ScramOfAnRfc,
    testing::Values(ScramExample{"SCRAM-SHA-1", "fyko+d2lbbFgONRv9qkxdawL", "3rfcNHYJY1ZVvWVs7j",
                                 "QSXCR+Q6sek8bf92",
                                 "v0X8v3Bz2T0CJGbJQyF0X+HI4Ts=", "rmF9pqV8S7suAoZWja4dJRkFsKQ="},
                    ScramExample{"SCRAM-SHA-256", "rOprNGfwEbeRWgbNEkqO", "%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0",
                                 "W22ZaJ0SNY7soEsUEjb6gQ==", "dHzbZapWIk4jUhN+Ute9ytag9zjfMHgsqmmiz7AndVQ=",
                                 "6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4="}),
    [](const auto& instance) { return instance.param.mechanism == "SCRAM-SHA-1" ? "Sha1" : "Sha256"; });

TEST(SaslMechanisms, ScramTakesNamesWithCommasAndEqualSigns) {
    const Accounts accounts = only("a,b=c", "x");
    std::string asked;
    const Accounts watching{accounts.admits, [&](std::string_view user) {
                                asked = user;
                                return accounts.passwordOf(user);
                            }};
    mailserver::makeMechanism("SCRAM-SHA-1", watching, {})->begin("y,a=other,n=a=2Cb=3Dc,r=nonce");
    EXPECT_EQ(asked, "a,b=c");
}

TEST(SaslMechanisms, WhatIsNotSettledIsNewEachTime) {
    const Accounts accounts = only("user", "pencil");
    for (const char* const name : {"SCRAM-SHA-1", "SCRAM-SHA-256", "CRAM-MD5"}) {
        const bool isScram = std::string_view(name) != "CRAM-MD5";
        const auto first = isScram ? std::optional<std::string>("n,,n=user,r=abc") : std::nullopt;
        const std::string one = mailserver::makeMechanism(name, accounts, {})->begin(first).challenge;
        const std::string other = mailserver::makeMechanism(name, accounts, {})->begin(first).challenge;
        EXPECT_GT(one.size(), 10U);
        EXPECT_NE(one, other);
    }
}

TEST(SaslMechanisms, WithoutPasswordsNobodyUsesOneThatHidesThem) {
    const Accounts accounts{[](std::string_view /*user*/, std::string_view /*password*/) { return true; }};
    const auto cram = mailserver::makeMechanism("CRAM-MD5", accounts, {});
    cram->begin(std::nullopt);
    EXPECT_EQ(cram->respond("tim b913a602c7eda7a495b4e6e7334d3890"), kRefused);
    const auto scram = mailserver::makeMechanism("SCRAM-SHA-1", accounts, {});
    const std::string first = scram->begin("n,,n=user,r=abc").challenge;
    EXPECT_EQ(scram->respond("c=biws," + first.substr(0, first.find(',')) + ",p=AAAA"), kRefused);
}

TEST(SaslMechanisms, OthersAreNotKnown) {
    EXPECT_EQ(mailserver::makeMechanism("GSSAPI", only("a", "b"), {}), nullptr);
    EXPECT_EQ(mailserver::makeMechanism("plain", only("a", "b"), {}), nullptr);
}

TEST(SaslDialogues, SpeakBase64AndEndWithAnAsterisk) {
    const Accounts accounts = only("tim", "secret");
    using Line = SaslDialogue::Outcome;
    SaslDialogue asked(mailserver::makeMechanism("LOGIN", accounts, {}));
    const SaslDialogue::Answer first = asked.begin("");
    EXPECT_EQ(first.outcome, Line::Challenge);
    EXPECT_EQ(first.challenge, "VXNlcm5hbWU6");
    EXPECT_EQ(asked.take("dGlt").challenge, "UGFzc3dvcmQ6");
    EXPECT_EQ(asked.take("c2VjcmV0").outcome, Line::Accepted);
    SaslDialogue ended(mailserver::makeMechanism("LOGIN", accounts, {}));
    ended.begin("");
    EXPECT_EQ(ended.take("*").outcome, Line::Cancelled);
    SaslDialogue wrong(mailserver::makeMechanism("LOGIN", accounts, {}));
    EXPECT_EQ(wrong.begin("=dG").outcome, Line::Malformed);
    SaslDialogue empty(mailserver::makeMechanism("LOGIN", accounts, {}));
    EXPECT_EQ(empty.begin("=").challenge, "UGFzc3dvcmQ6") << "an empty name is a name";
    EXPECT_EQ(empty.take("no base64").outcome, Line::Malformed);
}

} // namespace
