// User names and passwords of all kinds.

#include "components/sasl/mechanism.h"
#include "tests/sasl/mechanism_steps.h"
#include "tests/sasl/scram_server.h"

#include <QMessageAuthenticationCode>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using sasl::Account;
using support::responseOf;

struct Case {
    const char* name;
    Account account;
    /** The user name as SCRAM writes it. */
    std::string writtenUser;
    /** Both as SASLprep (RFC 4013) leaves them. */
    Account prepared;
};

std::vector<Case> cases() {
    const std::string longName(255, 'n');
    const std::string longPassword(255, 'p');
    return {
        {"Plain", {"user", "pencil"}, "user", {"user", "pencil"}},
        {"OneLetter", {"u", "p"}, "u", {"u", "p"}},
        {"Quotes", {"us\"er'", "pen\"cil'"}, "us\"er'", {"us\"er'", "pen\"cil'"}},
        {"Backslash", {"domain\\user", "pen\\cil"}, "domain\\user", {"domain\\user", "pen\\cil"}},
        {"Commas", {"u,s,er", "pen,cil"}, "u=2Cs=2Cer", {"u,s,er", "pen,cil"}},
        {"EqualsSigns", {"u=ser", "pen=cil"}, "u=3Dser", {"u=ser", "pen=cil"}},
        {"BothEscaped", {"=,=2C", "=,=2C"}, "=3D=2C=3D2C", {"=,=2C", "=,=2C"}},
        {"NonceInTheName", {"u,r=x", "p,r=x"}, "u=2Cr=3Dx", {"u,r=x", "p,r=x"}},
        {"Blanks", {" us er ", " pen cil "}, " us er ", {" us er ", " pen cil "}},
        {"Percent", {"%s%n", "%s%n"}, "%s%n", {"%s%n", "%s%n"}},
        {"AtSign", {"user@example.com", "pen@cil"}, "user@example.com", {"user@example.com", "pen@cil"}},
        {"Utf8", {"ren\u00E9", "gr\u00FC\u00DFe"}, "ren\u00E9", {"ren\u00E9", "gr\u00FC\u00DFe"}},
        {"Composed", {"rene\u0301", "gru\u0308n"}, "ren\u00E9", {"ren\u00E9", "gr\u00FCn"}},
        {"Compatibility", {"\u2168", "\u00AA"}, "IX", {"IX", "a"}},
        {"SoftHyphen", {"I\u00ADX", "pen\u00ADcil"}, "IX", {"IX", "pencil"}},
        {"NoBreakSpace", {"us\u00A0er", "pen\u00A0cil"}, "us er", {"us er", "pen cil"}},
        {"RightToLeft", {"\u05D0\u05D1", "\u0627\u0628"}, "\u05D0\u05D1", {"\u05D0\u05D1", "\u0627\u0628"}},
        {"Long", {longName, longPassword}, longName, {longName, longPassword}},
    };
}

class NameAndPassword : public testing::TestWithParam<Case> {};

TEST_P(NameAndPassword, ArePreparedForScram) {
    const Case& test = GetParam();
    const auto scram = sasl::makeMechanism("SCRAM-SHA-256", test.account);
    ASSERT_NE(scram, nullptr);
    support::ScramServer server(QCryptographicHash::Sha256, test.prepared.password, {"server", "salt", 2});
    const std::string first = server.firstMessage(scram->initialResponse().value_or(""));
    EXPECT_EQ(server.writtenUser(), test.writtenUser);
    const std::string final = responseOf(scram->answer(first)).value_or("");
    EXPECT_EQ(responseOf(scram->answer(server.finalMessage(final))), "");
    EXPECT_TRUE(scram->isComplete());
}

TEST_P(NameAndPassword, ArePreparedForCramMd5) {
    const Case& test = GetParam();
    const auto cram = sasl::makeMechanism("CRAM-MD5", test.account);
    ASSERT_NE(cram, nullptr);
    const QByteArray digest = QMessageAuthenticationCode::hash(
        QByteArray("<1@host>"), QByteArray::fromStdString(test.prepared.password), QCryptographicHash::Md5);
    EXPECT_EQ(responseOf(cram->answer("<1@host>")), test.prepared.user + " " + digest.toHex().toStdString());
}

TEST_P(NameAndPassword, AreSentAsTypedByPlainAndLogin) {
    const Case& test = GetParam();
    const auto plain = sasl::makeMechanism("PLAIN", test.account);
    ASSERT_NE(plain, nullptr);
    const std::string nul(1, '\0');
    EXPECT_EQ(plain->initialResponse(), nul + test.account.user + nul + test.account.password);
    const auto login = sasl::makeMechanism("LOGIN", test.account);
    ASSERT_NE(login, nullptr);
    EXPECT_EQ(responseOf(login->answer("Username:")), test.account.user);
    EXPECT_EQ(responseOf(login->answer("Password:")), test.account.password);
}

INSTANTIATE_TEST_SUITE_P(Accounts, NameAndPassword, testing::ValuesIn(cases()),
                         [](const auto& test) { return test.param.name; });

struct Unprepared {
    const char* name;
    std::string text;
};

std::vector<Unprepared> unpreparedTexts() {
    return {
        {"Empty", ""},
        {"NothingLeft", "\u00AD"},
        {"ControlCharacter", "pen\acil"},
        {"LineEnd", "pencil\r\n"},
        {"Delete", "pencil\x7F"},
        {"BothDirections", "\u06271"},
        {"PrivateUse", "\uE000"},
        {"NewerThanUnicode32", "\U0001F600"},
        {"NoUtf8", "pen\xE9"},
        {"CutUtf8", "pencil\xC3"},
    };
}

class UnpreparedText : public testing::TestWithParam<Unprepared> {};

TEST_P(UnpreparedText, IsNotForMechanismsThatPrepareIt) {
    const std::string& text = GetParam().text;
    for (const char* name : {"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5"}) {
        EXPECT_EQ(sasl::makeMechanism(name, {text, "pencil"}), nullptr) << name;
        EXPECT_EQ(sasl::makeMechanism(name, {"user", text}), nullptr) << name;
    }
    for (const char* name : {"PLAIN", "LOGIN"}) {
        EXPECT_NE(sasl::makeMechanism(name, {"user", text}), nullptr) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, UnpreparedText, testing::ValuesIn(unpreparedTexts()),
                         [](const auto& test) { return test.param.name; });

TEST(Nul, IsForNoMechanism) {
    const std::string nul(1, '\0');
    for (const char* name : {"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN", "LOGIN"}) {
        for (const std::string& text : {nul, nul + "x", "x" + nul, "x" + nul + "y"}) {
            EXPECT_EQ(sasl::makeMechanism(name, {text, "pencil"}), nullptr) << name;
            EXPECT_EQ(sasl::makeMechanism(name, {"user", text}), nullptr) << name;
        }
    }
}

} // namespace
