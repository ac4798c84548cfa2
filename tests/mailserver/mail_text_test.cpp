#include "mailserver/mail_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace mailserver;

TEST(MailText, EveryLineEndsInCrLf) {
    EXPECT_EQ(withCrLf("one\ntwo\r\nthree"), "one\r\ntwo\r\nthree\r\n");
    EXPECT_EQ(withCrLf("\n\n"), "\r\n\r\n");
    EXPECT_EQ(withCrLf(""), "");
}

TEST(MailText, LinesThatStartWithADotGetOneMore) {
    EXPECT_EQ(dotStuffed("a.b\r\n.\r\n..x\r\n"), "a.b\r\n..\r\n...x\r\n.\r\n");
    EXPECT_EQ(dotStuffed(""), ".\r\n");
}

TEST(MailText, AMessageThatIsStoredOddlyStillEndsWithADotAlone) {
    EXPECT_EQ(dotStuffed("a\n.\nb"), "a\n..\nb\r\n.\r\n");
    EXPECT_EQ(topOf("A: 1\n\r\none\ntwo", 1), "A: 1\n\r\none\n");
}

TEST(MailText, TheTopIsTheHeaderAndSomeLinesOfTheBody) {
    const std::string message = "A: 1\r\nB: 2\r\n\r\none\r\ntwo\r\n";
    EXPECT_EQ(topOf(message, 0), "A: 1\r\nB: 2\r\n\r\n");
    EXPECT_EQ(topOf(message, 1), "A: 1\r\nB: 2\r\n\r\none\r\n");
    EXPECT_EQ(topOf(message, 25), message);
    EXPECT_EQ(topOf("\r\nbody\r\nmore\r\n", 1), "\r\nbody\r\n");
    EXPECT_EQ(topOf("A: no body\r\n", 1), "A: no body\r\n");
}

TEST(MailText, ACommandIsSplitAtItsFirstSpace) {
    EXPECT_EQ(splitCommand("pass a b"), (std::pair<std::string, std::string_view>("PASS", "a b")));
    EXPECT_EQ(splitCommand("QUIT"), (std::pair<std::string, std::string_view>("QUIT", "")));
    EXPECT_EQ(splitCommand(""), (std::pair<std::string, std::string_view>("", "")));
}

} // namespace
