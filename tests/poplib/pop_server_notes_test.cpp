// Servers that keep notes in the messages' headers, and change them whenever somebody has looked at a
// message.

#include "tests/poplib/pop_fixture.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using support::message;
using support::Pop3Mailbox;
using support::PopTest;
using support::ScriptedServer;
using testing::ElementsAre;
using testing::SizeIs;
namespace errors = platform::errors;

/** The message with these lines at the end of its header. */
std::string withLines(const std::string& lines, std::string message) {
    return message.insert(message.find("\r\n\r\n") + 2, lines);
}

/** Lines that only count: a listing reads no more than 25. */
std::string longBody(const std::string& last) {
    std::string body;
    for (int line = 1; line <= 30; ++line) {
        body += "line\r\n";
    }
    return body + last;
}

class PopServerNotes : public PopTest {
  protected:
    PopServerNotes() {
        mailbox.answer("UIDL", "-ERR what is that\r\n");
        pop.setMailServer(server.address());
    }

    /** Lists one message, lets the server change it into the other one, and deletes it; returns the error. */
    int deleteChanged(const std::string& listed, const std::string& now) {
        mailbox.remove(1).deliver(listed);
        EXPECT_EQ(listing(), 0);
        mailbox.remove(1).deliver(now);
        EXPECT_EQ(logOn(), 0);
        const int error = remove(1);
        const int quit = logOff();
        return error != 0 ? error : quit;
    }

    Pop3Mailbox mailbox{{message("first")}};
    ScriptedServer server{mailbox};
};
} // namespace

TEST_F(PopServerNotes, ThatComeWithTheFirstListingDoNotHinderADeletion) {
    const std::string notes = "X-UIDL: fa05e01f9a866cd3\r\nX-IMAPbase: 1795346311       201\r\n"
                              "X-UID: 1\r\nStatus: O\r\nX-Keywords: one\r\n\ttwo\r\n";
    EXPECT_EQ(deleteChanged(message("a"), withLines(notes, message("a"))), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(0));
}

TEST_F(PopServerNotes, ThatSayThatAMessageWasFetchedDoNotHinderItsDeletion) {
    EXPECT_EQ(
        deleteChanged(withLines("status: O\r\n", message("a")), withLines("Status: OR\r\n", message("a"))),
        0);
    EXPECT_THAT(mailbox.messages(), SizeIs(0));
}

TEST_F(PopServerNotes, OnAServerWithoutTopDoNotHinderADeletionEither) {
    mailbox.answer("TOP", "-ERR what is that\r\n");
    EXPECT_EQ(deleteChanged(message("a"), withLines("Status: RO\r\n", message("a"))), 0);
    EXPECT_THAT(mailbox.messages(), SizeIs(0));
}

TEST_F(PopServerNotes, HideNoOtherMessage) {
    const std::string others[] = {
        withLines("Status: O\r\n", message("b")), withLines("X-Status: O\r\nX-Stat: O\r\n", message("a")),
        withLines("Status\r\n", message("a")), withLines("\tStatus: O\r\n", message("a"))};
    for (const std::string& other : others) {
        EXPECT_EQ(deleteChanged(message("a"), other), errors::AnotherMessage) << other;
        EXPECT_THAT(mailbox.messages(), ElementsAre(other));
    }
}

TEST_F(PopServerNotes, DoNotMakeUpForAnotherSize) {
    // All that is read of both is alike, and so is the size that the server tells.
    const std::string listed = withLines("Status: RO\r\n", message("a") + longBody("end\r\n"));
    const std::string other = message("a") + longBody("Status: RO\r\nend\r\n");
    ASSERT_EQ(listed.size(), other.size());
    EXPECT_EQ(deleteChanged(listed, other), errors::AnotherMessage);
    EXPECT_THAT(mailbox.messages(), ElementsAre(other));
}
