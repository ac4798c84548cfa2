#include "components/protocol/secrets.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

using protocol::Secrets;

std::string base64(const std::string& bytes) {
    return QByteArray::fromStdString(bytes).toBase64().toStdString();
}

TEST(Secrets, AreHiddenWhereverTheyStand) {
    Secrets secrets;
    secrets.add("secret");
    EXPECT_EQ(secrets.hiddenIn("secret"), "****");
    EXPECT_EQ(secrets.hiddenIn("wrong password secret"), "wrong password ****");
    EXPECT_EQ(secrets.hiddenIn("<secret> and \"secret\""), "<****> and \"****\"");
    EXPECT_EQ(secrets.hiddenIn("secretsecret"), "****");
    EXPECT_EQ(secrets.hiddenIn("Secre t"), "Secre t");
    EXPECT_EQ(secrets.hiddenIn(""), "");
}

TEST(Secrets, HideNothingWhereThereIsNone) {
    EXPECT_EQ(Secrets().hiddenIn("text"), "text");
    Secrets secrets;
    secrets.add("");
    secrets.addPassword("");
    EXPECT_EQ(secrets.hiddenIn("text"), "text");
}

TEST(Secrets, ThatOverlapAreHiddenWhole) {
    Secrets secrets;
    secrets.add("abc");
    secrets.add("bcd");
    secrets.add("aba");
    EXPECT_EQ(secrets.hiddenIn("xabcdx"), "x****x");
    EXPECT_EQ(secrets.hiddenIn("ababa."), "****.");
    EXPECT_EQ(secrets.hiddenIn("ab.cd"), "ab.cd");
}

TEST(Secrets, APasswordIsHiddenInBase64TooWhateverStandsAroundIt) {
    Secrets secrets;
    secrets.addPassword("open sesame");
    EXPECT_EQ(secrets.hiddenIn("-ERR " + base64("open sesame")), "-ERR ****=");
    EXPECT_EQ(secrets.hiddenIn("b3BlbiBzZXNhbWU"), "****");
    for (const std::string& before :
         std::initializer_list<std::string>{"", "x", "xy", "xyz", std::string(1, '\0')}) {
        for (const std::string behind : {"", "x", "xy", "xyz", "\r\n"}) {
            const std::string shown = secrets.hiddenIn(base64(before + "open sesame" + behind));
            EXPECT_NE(shown.find("****"), std::string::npos) << before << behind;
            // Three letters at each end at the most have bits of both.
            EXPECT_LE(shown.size(), base64(before).size() + 4 + base64(behind).size() + 4);
        }
    }
}

TEST(Secrets, AShortPasswordIsHiddenAsFarAsItCanBeTold) {
    Secrets secrets;
    secrets.addPassword("ab");
    EXPECT_EQ(secrets.hiddenIn("+OK ab " + base64("ab") + " cd"), "+OK **** ****= cd");
}

TEST(Secrets, ACommandTellsWhatItHides) {
    Secrets secrets;
    secrets.addHiddenIn({"PASS secret", "PASS ****"});
    secrets.addHiddenIn({"AUTH PLAIN AGJvYgBzZQ==", "AUTH PLAIN ****"});
    secrets.addHiddenIn({"c2VjcmV0", "****"});
    secrets.addHiddenIn({"", "****"});
    secrets.addHiddenIn({"STAT", "STAT"});
    EXPECT_EQ(secrets.hiddenIn("secret AGJvYgBzZQ== AGJvYgBzZQ c2VjcmV0"), "**** ****== **** ****");
    EXPECT_EQ(secrets.hiddenIn("STAT AUTH PLAIN PASS"), "STAT AUTH PLAIN PASS");
}

} // namespace
