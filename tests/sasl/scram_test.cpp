#include "components/sasl/base64.h"
#include "components/sasl/mechanism.h"
#include "tests/sasl/fixed_random.h"
#include "tests/sasl/mechanism_steps.h"
#include "tests/sasl/scram_server.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using sasl::Fault;
using support::faultOf;
using support::responseOf;
using support::ScramServer;
using support::ScramTerms;

const sasl::Account kUser{"user", "pencil"};

struct Example {
    const char* name;
    QCryptographicHash::Algorithm hash;
    std::string clientFirst;
    ScramTerms terms;
    std::string serverFirst;
    std::string clientFinal;
    std::string serverFinal;
};

/** RFC 5802 section 5 and RFC 7677 section 3. */
const std::vector<Example>& examples() {
    static const std::vector<Example> table{
        {"Sha1", QCryptographicHash::Sha1, "n,,n=user,r=fyko+d2lbbFgONRv9qkxdawL",
         ScramTerms{"3rfcNHYJY1ZVvWVs7j", sasl::fromBase64("QSXCR+Q6sek8bf92").value_or(""), 4096},
         "r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,s=QSXCR+Q6sek8bf92,i=4096",
         "c=biws,r=fyko+d2lbbFgONRv9qkxdawL3rfcNHYJY1ZVvWVs7j,p=v0X8v3Bz2T0CJGbJQyF0X+HI4Ts=",
         "v=rmF9pqV8S7suAoZWja4dJRkFsKQ="},
        {"Sha256", QCryptographicHash::Sha256, "n,,n=user,r=rOprNGfwEbeRWgbNEkqO",
         ScramTerms{"%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0",
                    sasl::fromBase64("W22ZaJ0SNY7soEsUEjb6gQ==").value_or(""), 4096},
         "r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,s=W22ZaJ0SNY7soEsUEjb6gQ==,i=4096",
         "c=biws,r=rOprNGfwEbeRWgbNEkqO%hvYDpWUa2RaTCAfuxFIlj)hNlF$k0,"
         "p=dHzbZapWIk4jUhN+Ute9ytag9zjfMHgsqmmiz7AndVQ=",
         "v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4="},
    };
    return table;
}

class ScramServerOfTheTests : public testing::TestWithParam<Example> {};

TEST_P(ScramServerOfTheTests, SaysWhatTheServerOfTheRfcSays) {
    const Example& example = GetParam();
    ScramServer server(example.hash, kUser.password, example.terms);
    EXPECT_EQ(server.firstMessage(example.clientFirst), example.serverFirst);
    EXPECT_EQ(server.writtenUser(), "user");
    EXPECT_EQ(server.finalMessage(example.clientFinal), example.serverFinal);
}

TEST_P(ScramServerOfTheTests, RefusesAnotherPassword) {
    const Example& example = GetParam();
    ScramServer server(example.hash, "pencils", example.terms);
    server.firstMessage(example.clientFirst);
    EXPECT_EQ(server.finalMessage(example.clientFinal), "e=invalid-proof");
}

INSTANTIATE_TEST_SUITE_P(Examples, ScramServerOfTheTests, testing::ValuesIn(examples()),
                         [](const auto& test) { return test.param.name; });

TEST(Scram, GoesAsInTheExampleOfRfc5802) {
    // The library's nonce has 18 bytes, as this example's has. The one of RFC 7677 is shorter.
    const Example& example = examples()[0];
    const support::FixedRandom nonce(sasl::fromBase64("fyko+d2lbbFgONRv9qkxdawL").value_or(""));
    const auto scram = sasl::makeMechanism("SCRAM-SHA-1", kUser);
    ASSERT_NE(scram, nullptr);
    EXPECT_EQ(scram->initialResponse(), example.clientFirst);
    EXPECT_EQ(responseOf(scram->answer(example.serverFirst)), example.clientFinal);
    EXPECT_EQ(responseOf(scram->answer(example.serverFinal)), "");
    EXPECT_TRUE(scram->isComplete());
}

struct Hash {
    const char* mechanism;
    QCryptographicHash::Algorithm hash;
};

class Scram : public testing::TestWithParam<Hash> {
  protected:
    void SetUp() override { ASSERT_NE(scram_, nullptr); }

    std::string serverFirst() { return server_.firstMessage(scram_->initialResponse().value_or("")); }

    /** The server's final message, the client having made its proof. */
    std::string serverFinal() {
        return server_.finalMessage(responseOf(scram_->answer(serverFirst())).value_or(""));
    }

    ScramTerms terms_{"server", "salt", 2};
    ScramServer server_{GetParam().hash, kUser.password, terms_};
    std::unique_ptr<sasl::Mechanism> scram_ =
        sasl::makeMechanism(GetParam().mechanism, kUser, {.iterations = 5000});
};

TEST_P(Scram, ProvesBothSides) {
    const std::string signature = serverFinal();
    EXPECT_EQ(signature.substr(0, 2), "v=");
    EXPECT_FALSE(scram_->isComplete());
    EXPECT_EQ(responseOf(scram_->answer(signature)), "");
    EXPECT_TRUE(scram_->isComplete());
}

TEST_P(Scram, BeginsAtAnEmptyChallengeWhenNothingWentAlongWithTheCommand) {
    const std::string first = responseOf(scram_->answer("")).value_or("");
    EXPECT_EQ(first.substr(0, 12), "n,,n=user,r=");
    const std::string final = responseOf(scram_->answer(server_.firstMessage(first))).value_or("");
    EXPECT_EQ(responseOf(scram_->answer(server_.finalMessage(final))), "");
    EXPECT_TRUE(scram_->isComplete());
}

TEST_P(Scram, SaysNothingToAServerThatSaysSomethingFirst) {
    EXPECT_EQ(faultOf(scram_->answer("r=abc,s=c2FsdA==,i=1")), Fault::ServerNotProven);
    EXPECT_EQ(scram_->initialResponse(), std::nullopt);
}

TEST_P(Scram, MakesANonceOfItsOwnEachTime) {
    const auto another = sasl::makeMechanism(GetParam().mechanism, kUser);
    const auto first = scram_->initialResponse();
    ASSERT_TRUE(first);
    EXPECT_NE(first, another->initialResponse());
    EXPECT_EQ(scram_->initialResponse(), std::nullopt);
}

TEST_P(Scram, BelievesNoSuccessWithoutTheSignature) {
    EXPECT_FALSE(scram_->isComplete());
    const std::string first = serverFirst();
    EXPECT_FALSE(scram_->isComplete());
    EXPECT_TRUE(responseOf(scram_->answer(first)));
    EXPECT_FALSE(scram_->isComplete());
}

TEST_P(Scram, TakesNoChallengeAfterTheSignature) {
    const std::string signature = serverFinal();
    scram_->answer(signature);
    EXPECT_EQ(faultOf(scram_->answer(signature)), Fault::ServerNotProven);
    EXPECT_FALSE(scram_->isComplete());
}

TEST_P(Scram, TakesNoSignatureAfterAWrongOne) {
    const std::string signature = serverFinal();
    EXPECT_EQ(faultOf(scram_->answer("v=" + sasl::toBase64("wrong"))), Fault::ServerNotProven);
    EXPECT_EQ(faultOf(scram_->answer(signature)), Fault::ServerNotProven);
    EXPECT_FALSE(scram_->isComplete());
}

TEST_P(Scram, DoesNotBelieveAServerWithAnotherPassword) {
    ScramServer other(GetParam().hash, "pencils", terms_);
    const std::string first = other.firstMessage(scram_->initialResponse().value_or(""));
    const std::string final = responseOf(scram_->answer(first)).value_or("");
    EXPECT_EQ(other.finalMessage(final), "e=invalid-proof");
    EXPECT_EQ(faultOf(scram_->answer(other.signature(final))), Fault::ServerNotProven);
    EXPECT_FALSE(scram_->isComplete());
}

TEST_P(Scram, IgnoresExtensionsBehindTheSignature) {
    EXPECT_EQ(responseOf(scram_->answer(serverFinal() + ",x=more")), "");
    EXPECT_TRUE(scram_->isComplete());
}

TEST_P(Scram, SignsTheExtensionsOfTheFirstMessageToo) {
    terms_.extensions = ",x=more,y=even=more";
    ScramServer server(GetParam().hash, kUser.password, terms_);
    const std::string first = server.firstMessage(scram_->initialResponse().value_or(""));
    const std::string final = responseOf(scram_->answer(first)).value_or("");
    EXPECT_EQ(responseOf(scram_->answer(server.finalMessage(final))), "");
    EXPECT_TRUE(scram_->isComplete());
}

INSTANTIATE_TEST_SUITE_P(Hashes, Scram,
                         testing::Values(Hash{"SCRAM-SHA-1", QCryptographicHash::Sha1},
                                         Hash{"SCRAM-SHA-256", QCryptographicHash::Sha256}),
                         [](const auto& test) {
                             return test.param.hash == QCryptographicHash::Sha1 ? "Sha1" : "Sha256";
                         });

TEST(ScramWork, IsDoneForAMillionIterationsAndNoMore) {
    const auto faultFor = [](const char* count) {
        const auto scram = sasl::makeMechanism("SCRAM-SHA-1", kUser);
        const std::string nonce = scram->initialResponse().value_or("").substr(12);
        return faultOf(scram->answer("r=" + nonce + "server,s=c2FsdA==,i=" + count));
    };
    EXPECT_EQ(faultFor("1000000"), std::nullopt);
    EXPECT_EQ(faultFor("1000001"), Fault::Refused);
}

} // namespace
