#include "mailserver/pop3_conversation.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using mailserver::Mailbox;
using mailserver::Pop3Conversation;

class Pop3ConversationTest : public testing::Test {
  protected:
    Pop3ConversationTest() {
        EXPECT_TRUE(mailbox.append("Subject: one\n\nbody\n.dot\nlast\n"));
        EXPECT_TRUE(mailbox.append("Subject: two\n\nsecond\n"));
    }

    std::string send(const std::string& line) { return conversation.receive(line + "\r\n"); }

    void logOn() {
        EXPECT_EQ(send("USER anybody").substr(0, 3), "+OK");
        EXPECT_EQ(send("PASS demo").substr(0, 3), "+OK");
    }

    Mailbox mailbox;
    Pop3Conversation conversation{mailbox};
};

TEST_F(Pop3ConversationTest, WrongPasswordIsRefusedAndMayBeRetried) {
    send("USER anybody");
    EXPECT_EQ(send("PASS Demo").substr(0, 4), "-ERR");
    EXPECT_EQ(send("STAT").substr(0, 4), "-ERR");
    logOn();
    EXPECT_EQ(send("STAT"), "+OK 2 58\r\n");
}

TEST_F(Pop3ConversationTest, PasswordNeedsAUserNameBefore) {
    EXPECT_EQ(send("PASS demo").substr(0, 4), "-ERR");
    EXPECT_EQ(send("USER").substr(0, 4), "-ERR");
    EXPECT_EQ(send("PASS demo").substr(0, 4), "-ERR");
}

TEST_F(Pop3ConversationTest, WhoIsLetInCanBeGiven) {
    Pop3Conversation guarded(mailbox, [](std::string_view user, std::string_view password) {
        return user == "bob" && password == "a b";
    });
    EXPECT_EQ(guarded.receive("USER ann\r\nPASS a b\r\n"),
              "+OK the password, please\r\n-ERR [AUTH] wrong name or password\r\n");
    EXPECT_EQ(guarded.receive("USER bob\r\nPASS a b\r\n"), "+OK the password, please\r\n+OK welcome\r\n");
}

TEST_F(Pop3ConversationTest, CommandsAreKnownInAnyCase) {
    EXPECT_EQ(send("user anybody").substr(0, 3), "+OK");
    EXPECT_EQ(send("Pass demo").substr(0, 3), "+OK");
}

TEST_F(Pop3ConversationTest, ListAndUidlAnswerForOneAndForAll) {
    logOn();
    EXPECT_EQ(send("LIST"), "+OK the list follows\r\n1 34\r\n2 24\r\n.\r\n");
    EXPECT_EQ(send("LIST 2"), "+OK 2 24\r\n");
    EXPECT_EQ(send("UIDL"), "+OK the list follows\r\n1 message-1\r\n2 message-2\r\n.\r\n");
    EXPECT_EQ(send("UIDL 1"), "+OK 1 message-1\r\n");
}

TEST_F(Pop3ConversationTest, NumbersThatNameNoMessageAreRefused) {
    logOn();
    for (const char* const number : {"0", "3", "-1", "x", "1x", "99999999999999999999999", " 1"}) {
        EXPECT_EQ(send(std::string("LIST ") + number).substr(0, 4), "-ERR") << number;
        EXPECT_EQ(send(std::string("RETR ") + number).substr(0, 4), "-ERR") << number;
        EXPECT_EQ(send(std::string("DELE ") + number).substr(0, 4), "-ERR") << number;
        EXPECT_EQ(send(std::string("TOP ") + number + " 1").substr(0, 4), "-ERR") << number;
    }
    EXPECT_EQ(send("RETR").substr(0, 4), "-ERR");
    EXPECT_EQ(send("TOP 1").substr(0, 4), "-ERR");
    EXPECT_EQ(send("TOP 1 -1").substr(0, 4), "-ERR");
}

TEST_F(Pop3ConversationTest, MessagesComeDotStuffed) {
    logOn();
    EXPECT_EQ(send("RETR 1"), "+OK 34 octets\r\nSubject: one\r\n\r\nbody\r\n..dot\r\nlast\r\n.\r\n");
    EXPECT_EQ(send("TOP 1 2"), "+OK the top follows\r\nSubject: one\r\n\r\nbody\r\n..dot\r\n.\r\n");
}

TEST_F(Pop3ConversationTest, DeletionTakesEffectWithQuit) {
    logOn();
    EXPECT_EQ(send("DELE 1").substr(0, 3), "+OK");
    EXPECT_EQ(send("DELE 1").substr(0, 4), "-ERR");
    EXPECT_EQ(send("RETR 1").substr(0, 4), "-ERR");
    EXPECT_EQ(send("STAT"), "+OK 1 24\r\n");
    EXPECT_EQ(send("LIST"), "+OK the list follows\r\n2 24\r\n.\r\n");
    EXPECT_EQ(mailbox.messages().size(), 2U);
    EXPECT_EQ(send("QUIT").substr(0, 3), "+OK");
    EXPECT_TRUE(conversation.isOver());
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_EQ(mailbox.messages().front()->uniqueId, "message-2");
}

TEST_F(Pop3ConversationTest, RsetTakesDeletionsBack) {
    logOn();
    send("DELE 1");
    EXPECT_EQ(send("RSET").substr(0, 3), "+OK");
    send("QUIT");
    EXPECT_EQ(mailbox.messages().size(), 2U);
}

TEST_F(Pop3ConversationTest, AConnectionThatEndsWithoutQuitDeletesNothing) {
    {
        Pop3Conversation broken(mailbox);
        broken.receive("USER x\r\nPASS demo\r\nDELE 1\r\n");
    }
    EXPECT_EQ(mailbox.messages().size(), 2U);
}

TEST_F(Pop3ConversationTest, ASessionSeesTheMailboxAsItWasAtLogOn) {
    logOn();
    EXPECT_TRUE(mailbox.append("Subject: three\n\n"));
    mailbox.remove("message-1");
    EXPECT_EQ(send("STAT"), "+OK 2 58\r\n");
    EXPECT_EQ(send("RETR 1").substr(0, 3), "+OK");
}

TEST_F(Pop3ConversationTest, NothingIsAnsweredAfterQuit) {
    EXPECT_EQ(conversation.receive("QUIT\r\nCAPA\r\n"), "+OK good-bye\r\n");
}

TEST_F(Pop3ConversationTest, ALineThatIsTooLongIsRefusedAndTheSessionGoesOn) {
    EXPECT_EQ(send("USER " + std::string(100000, 'x')), "-ERR the line is too long\r\n");
    logOn();
}

TEST_F(Pop3ConversationTest, PiecesOfAnySizeGiveTheSameAnswers) {
    const std::string dialogue = "CAPA\r\nUSER x\r\nPASS demo\r\nNOOP\r\nTOP 1 1\r\nNONSENSE\r\nQUIT\r\n";
    const std::string wanted = Pop3Conversation(mailbox).receive(dialogue);
    EXPECT_EQ(wanted.substr(wanted.size() - 14), "+OK good-bye\r\n");
    for (const std::size_t size : {1U, 2U, 7U}) {
        Pop3Conversation inPieces(mailbox);
        std::string answers;
        for (std::size_t start = 0; start < dialogue.size(); start += size) {
            answers += inPieces.receive(std::string_view(dialogue).substr(start, size));
        }
        EXPECT_EQ(answers, wanted) << size;
    }
}

} // namespace
