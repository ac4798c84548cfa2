// What the plans ask of a POP3 server, and in which order, played from dialogues without a network.

#include "components/poplib/listed_mailbox.h"
#include "platform/runtime_error.h"
#include "tests/poplib/dialogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using platform::errorNumberOf;
using poplib::Event;
using poplib::ListedMailbox;
using support::Dialogue;
using testing::ElementsAre;
namespace errors = platform::errors;

/** A mailbox with one message that was listed in a session of its own, with the unique-id "one". */
ListedMailbox listedMailbox() {
    Dialogue dialogue{"S +OK", "C LIST 1", "S +OK 1 9", "C TOP 1 25", "S +OK", "S A: b", "S ",       "S text",
                      "S .",   "C UIDL",   "S +OK",     "S 1 one",    "S .",   "C QUIT", "S +OK bye"};
    ListedMailbox mailbox;
    dialogue.next();
    std::vector<std::string> lines;
    EXPECT_EQ(mailbox.size(dialogue, 1), 9);
    mailbox.list(dialogue, 1, 25, {},
                 [&](const Event& event) { lines.push_back(support::described(event)); });
    mailbox.quit(dialogue);
    mailbox.endSession();
    dialogue.expectToBeSaid();
    EXPECT_THAT(lines, ElementsAre("header [A] [b]", testing::StartsWith("body "), "ended TOP"));
    return mailbox;
}

TEST(ListedMailbox, FetchesTheWholeMessageWhereTopIsUnknown) {
    Dialogue dialogue{"S +OK", "C LIST 3", "S +OK 3 9", "C TOP 3 1", "S -ERR", "C RETR 3",
                      "S +OK", "S A: b",   "S ",        "S one",     "S two",  "S ."};
    ListedMailbox mailbox;
    dialogue.next();
    mailbox.size(dialogue, 3);
    std::size_t lines = 0;
    mailbox.list(dialogue, 3, 1, {}, [&](const Event& event) {
        lines += std::holds_alternative<poplib::ResponseEnded>(event) ? 0U : 1U;
    });
    dialogue.expectToBeSaid();
    EXPECT_EQ(lines, 2U) << "the header and one body line";
}

TEST(ListedMailbox, FetchesNoVeryLargeMessageWholeForARow) {
    Dialogue dialogue{"S +OK", "C LIST 3", "S +OK 3 101", "C TOP 3 25", "S -ERR"};
    ListedMailbox mailbox;
    dialogue.next();
    mailbox.size(dialogue, 3);
    poplib::Limits limits;
    limits.wholeMessageBytes = 100;
    mailbox.list(dialogue, 3, 25, limits, [](const Event&) { FAIL() << "there are no lines"; });
    dialogue.expectToBeSaid();
}

TEST(ListedMailbox, DeletesWhatIsStillTheListedMessage) {
    ListedMailbox mailbox = listedMailbox();
    Dialogue dialogue{"S +OK",     "C UIDL",     "S +OK", "S 1 one", "S .",  "C LIST 1",
                      "S +OK 1 9", "C TOP 1 25", "S +OK", "S A: b",  "S ",   "S text",
                      "S .",       "C DELE 1",   "S +OK", "C QUIT",  "S +OK"};
    dialogue.next();
    mailbox.deleteMessage(dialogue, 1, {});
    EXPECT_TRUE(mailbox.hasDeletions());
    mailbox.quit(dialogue);
    mailbox.endSession();
    dialogue.expectToBeSaid();
    Dialogue later{"S +OK"};
    later.next();
    EXPECT_EQ(errorNumberOf([&] { mailbox.deleteMessage(later, 1, {}); }), errors::AnotherMessage)
        << "the number names nothing any more";
    later.expectToBeSaid();
}

TEST(ListedMailbox, DeletesNothingByANumberThatNamesAnotherMessage) {
    const std::vector<std::string_view> dialogues[] = {
        {"S +OK", "C UIDL", "S +OK", "S 1 two", "S ."},
        {"S +OK", "C UIDL", "S +OK", "S 1 one", "S .", "C LIST 1", "S +OK 1 8"},
        {"S +OK", "C UIDL", "S +OK", "S 1 one", "S .", "C LIST 1", "S -ERR"},
        {"S +OK", "C UIDL", "S +OK", "S 1 one", "S .", "C LIST 1", "S +OK 1 9", "C TOP 1 25", "S +OK",
         "S A: c", "S ", "S text", "S ."},
    };
    for (const auto& lines : dialogues) {
        ListedMailbox mailbox = listedMailbox();
        Dialogue dialogue(lines);
        dialogue.next();
        EXPECT_EQ(errorNumberOf([&] { mailbox.deleteMessage(dialogue, 1, {}); }), errors::AnotherMessage);
        EXPECT_FALSE(mailbox.hasDeletions());
        dialogue.expectToBeSaid();
    }
}

TEST(ListedMailbox, KeepsItsNumbersWhenTheQuitIsRefused) {
    ListedMailbox mailbox = listedMailbox();
    const std::vector<std::string_view> deletion = {
        "S +OK",  "C UIDL", "S +OK",  "S 1 one", "S .",      "C LIST 1", "S +OK 1 9", "C TOP 1 25", "S +OK",
        "S A: b", "S ",     "S text", "S .",     "C DELE 1", "S +OK",    "C QUIT",    "S -ERR"};
    for (int attempt = 0; attempt < 2; ++attempt) {
        Dialogue dialogue(deletion);
        dialogue.next();
        EXPECT_EQ(errorNumberOf([&] { mailbox.deleteMessage(dialogue, 1, {}); }), 0);
        EXPECT_EQ(errorNumberOf([&] { mailbox.quit(dialogue); }), errors::MailServerTrouble);
        mailbox.endSession();
        dialogue.expectToBeSaid();
    }
}

} // namespace
