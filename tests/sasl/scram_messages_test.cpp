#include "components/sasl/mechanism.h"
#include "tests/sasl/mechanism_steps.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using sasl::Fault;

/** The client's first message up to its nonce. */
constexpr std::string_view kBeforeNonce = "n,,n=user,r=";
/** Stands for the client's nonce in the messages of the tables. */
constexpr std::string_view kNonce = "<nonce>";

struct Message {
    const char* name;
    std::string text;
    std::optional<Fault> fault;
};

/** A client with its nonce, which accepts counts up to 5000. */
class Client {
  public:
    Client() : scram_(sasl::makeMechanism("SCRAM-SHA-256", {"user", "pencil"}, {.iterations = 5000})) {
        nonce_ = scram_->initialResponse().value_or("").substr(kBeforeNonce.size());
    }

    std::optional<Fault> faultFor(std::string message) {
        if (const std::size_t at = message.find(kNonce); at != std::string::npos) {
            message.replace(at, kNonce.size(), nonce_);
        }
        return support::faultOf(scram_->answer(message));
    }

    const std::string& nonce() const { return nonce_; }

  private:
    std::unique_ptr<sasl::Mechanism> scram_;
    std::string nonce_;
};

const std::vector<Message>& firstMessages() {
    static const std::vector<Message> table{
        {"Plain", "r=<nonce>more,s=c2FsdA==,i=4096", std::nullopt},
        {"NothingAddedToTheNonce", "r=<nonce>,s=c2FsdA==,i=4096", std::nullopt},
        {"ExtensionThatMayBeIgnored", "r=<nonce>more,s=c2FsdA==,i=4096,x=some=thing", std::nullopt},
        {"FewestIterations", "r=<nonce>more,s=c2FsdA==,i=1", std::nullopt},
        {"MostIterations", "r=<nonce>more,s=c2FsdA==,i=5000", std::nullopt},
        {"OneIterationTooMany", "r=<nonce>more,s=c2FsdA==,i=5001", Fault::Refused},
        {"TenMillionIterations", "r=<nonce>more,s=c2FsdA==,i=10000000", Fault::Refused},
        {"MoreThan32Bits", "r=<nonce>more,s=c2FsdA==,i=4294967297", Fault::Refused},
        {"MoreThan64Bits", "r=<nonce>more,s=c2FsdA==,i=18446744073709551617", Fault::Refused},
        {"MoreThan64BitsAndALetter", "r=<nonce>more,s=c2FsdA==,i=18446744073709551617x",
         Fault::ServerNotProven},
        {"NoIteration", "r=<nonce>more,s=c2FsdA==,i=0", Fault::ServerNotProven},
        {"LeadingZero", "r=<nonce>more,s=c2FsdA==,i=04096", Fault::ServerNotProven},
        {"NegativeIterations", "r=<nonce>more,s=c2FsdA==,i=-1", Fault::ServerNotProven},
        {"PlusSign", "r=<nonce>more,s=c2FsdA==,i=+1", Fault::ServerNotProven},
        {"Hexadecimal", "r=<nonce>more,s=c2FsdA==,i=0x10", Fault::ServerNotProven},
        {"Fraction", "r=<nonce>more,s=c2FsdA==,i=1.5", Fault::ServerNotProven},
        {"BlankBehindTheCount", "r=<nonce>more,s=c2FsdA==,i=4096 ", Fault::ServerNotProven},
        {"LineEnd", "r=<nonce>more,s=c2FsdA==,i=4096\r\n", Fault::ServerNotProven},
        {"CountInWords", "r=<nonce>more,s=c2FsdA==,i=many", Fault::ServerNotProven},
        {"EmptyCount", "r=<nonce>more,s=c2FsdA==,i=", Fault::ServerNotProven},
        {"NoCount", "r=<nonce>more,s=c2FsdA==", Fault::ServerNotProven},
        {"NoSalt", "r=<nonce>more,i=4096", Fault::ServerNotProven},
        {"EmptySalt", "r=<nonce>more,s=,i=4096", Fault::ServerNotProven},
        {"SaltThatIsNoBase64", "r=<nonce>more,s=****,i=4096", Fault::ServerNotProven},
        {"SaltWithoutPadding", "r=<nonce>more,s=c2FsdA,i=4096", Fault::ServerNotProven},
        {"SaltWithALineEnd", "r=<nonce>more,s=c2Fs\ndA==,i=4096", Fault::ServerNotProven},
        {"NoNonce", "s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"EmptyNonce", "r=,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"ForeignNonce", "r=fyko+d2lbbFgONRv9qkxdawL3rfc,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"NonceBehindOtherLetters", "r=x<nonce>,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"BlankInTheNonce", "r=<nonce> more,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"NonceBeyondAscii", "r=<nonce>\xC3\xA9,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"NulInTheNonce", std::string("r=<nonce>\0,s=c2FsdA==,i=4096", 28), Fault::ServerNotProven},
        {"NulAtTheEnd", std::string("r=<nonce>,s=c2FsdA==,i=4096\0", 28), Fault::ServerNotProven},
        {"OtherOrder", "s=c2FsdA==,r=<nonce>more,i=4096", Fault::ServerNotProven},
        {"TwoNonces", "r=<nonce>more,r=<nonce>more,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"CapitalNames", "R=<nonce>more,S=c2FsdA==,I=4096", Fault::ServerNotProven},
        {"MustBeUnderstoodFirst", "m=new,r=<nonce>more,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"MustBeUnderstoodLast", "r=<nonce>more,s=c2FsdA==,i=4096,m=new", Fault::ServerNotProven},
        {"CommaAtTheEnd", "r=<nonce>more,s=c2FsdA==,i=4096,", Fault::ServerNotProven},
        {"TwoCommas", "r=<nonce>more,,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"ExtensionWithoutValue", "r=<nonce>more,s=c2FsdA==,i=4096,x", Fault::ServerNotProven},
        {"ExtensionNamedByADigit", "r=<nonce>more,s=c2FsdA==,i=4096,1=x", Fault::ServerNotProven},
        {"Signature", "v=rmF9pqV8S7suAoZWja4dJRkFsKQ=", Fault::ServerNotProven},
        {"Empty", "", Fault::ServerNotProven},
        {"Commas", ",,,", Fault::ServerNotProven},
        {"Words", "go ahead", Fault::ServerNotProven},
        {"Error", "e=unknown-user", Fault::LogOnRefused},
        {"EmptyError", "e=", Fault::ServerNotProven},
    };
    return table;
}

class ServerFirst : public testing::TestWithParam<Message> {};

TEST_P(ServerFirst, IsAnsweredOrAFault) {
    Client client;
    ASSERT_FALSE(client.nonce().empty());
    EXPECT_EQ(client.faultFor(GetParam().text), GetParam().fault);
}

TEST_P(ServerFirst, IsNotAnsweredAfterAFault) {
    Client client;
    if (client.faultFor(GetParam().text)) {
        EXPECT_EQ(client.faultFor("r=<nonce>more,s=c2FsdA==,i=4096"), Fault::ServerNotProven);
    } else {
        EXPECT_EQ(client.faultFor(GetParam().text), Fault::ServerNotProven);
    }
}

INSTANTIATE_TEST_SUITE_P(Messages, ServerFirst, testing::ValuesIn(firstMessages()),
                         [](const auto& test) { return test.param.name; });

const std::vector<Message>& finalMessages() {
    static const std::vector<Message> table{
        {"WrongSignature", "v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4=", Fault::ServerNotProven},
        {"SignatureOfAnotherLength", "v=rmF9pqV8S7suAoZWja4dJRkFsKQ=", Fault::ServerNotProven},
        {"SignatureThatIsNoBase64", "v=******", Fault::ServerNotProven},
        {"EmptySignature", "v=", Fault::ServerNotProven},
        {"Empty", "", Fault::ServerNotProven},
        {"Words", "welcome", Fault::ServerNotProven},
        {"FirstMessageAgain", "r=<nonce>more,s=c2FsdA==,i=4096", Fault::ServerNotProven},
        {"ExtensionFirst", "x=more,v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4=", Fault::ServerNotProven},
        {"Nul", std::string("v=\0\0\0\0", 6), Fault::ServerNotProven},
        {"WrongProof", "e=invalid-proof", Fault::LogOnRefused},
        {"UnknownUser", "e=unknown-user", Fault::LogOnRefused},
        {"ErrorAndExtension", "e=other-error,x=more", Fault::LogOnRefused},
        {"EmptyError", "e=", Fault::ServerNotProven},
        {"ErrorBehindASignature", "v=6rriTRBi23WpRR/wtup+mMhUZUn/dB5nLTJRsjl95G4=,e=invalid-proof",
         Fault::ServerNotProven},
    };
    return table;
}

class ServerFinal : public testing::TestWithParam<Message> {};

TEST_P(ServerFinal, IsAFaultWithoutTheSignature) {
    Client client;
    ASSERT_EQ(client.faultFor("r=<nonce>more,s=c2FsdA==,i=1"), std::nullopt);
    EXPECT_EQ(client.faultFor(GetParam().text), GetParam().fault);
    EXPECT_EQ(client.faultFor(GetParam().text), Fault::ServerNotProven);
}

INSTANTIATE_TEST_SUITE_P(Messages, ServerFinal, testing::ValuesIn(finalMessages()),
                         [](const auto& test) { return test.param.name; });

} // namespace
