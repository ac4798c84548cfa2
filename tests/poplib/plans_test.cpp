// What the plans ask of a POP3 server, and in which order, played from dialogues without a network.

#include "components/poplib/listed_mailbox.h"
#include "components/poplib/log_on_plan.h"
#include "platform/runtime_error.h"
#include "tests/support/described_event.h"
#include "tests/support/recorded_exchange.h"

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
using poplib::Pop3Session;
using testing::ElementsAre;
using testing::ElementsAreArray;
namespace errors = platform::errors;

int numberOfFailure(const Event* event, const Pop3Session& /*session*/) {
    return event == nullptr || std::holds_alternative<poplib::Failed>(*event) ? errors::MailServerTrouble : 0;
}

/** A dialogue of lines that start with "S " for the server and "C " for the client. */
class Dialogue : public support::RecordedExchange<Pop3Session> {
  public:
    Dialogue(std::initializer_list<std::string_view> lines) : Dialogue(std::vector(lines)) {}

    explicit Dialogue(const std::vector<std::string_view>& lines)
        : RecordedExchange(turnsOf(lines), std::string_view::npos, support::described, numberOfFailure) {
        for (const std::string_view line : lines) {
            if (line.starts_with("C ")) {
                clientLines_.emplace_back(line.substr(2));
            }
        }
    }

    /** Checks that the client has sent its lines of the dialogue, all of them and no other. */
    void expectToBeSaid() {
        collectOutput();
        EXPECT_THAT(sent(), ElementsAreArray(clientLines_));
    }

  private:
    static std::vector<support::Transcript::Turn> turnsOf(const std::vector<std::string_view>& lines) {
        std::vector<support::Transcript::Turn> turns;
        using Speaker = support::Transcript::Speaker;
        for (const std::string_view line : lines) {
            const bool fromServer = line.starts_with("S ");
            turns.push_back({fromServer ? Speaker::Server : Speaker::Client,
                             std::string(line.substr(2)) + (fromServer ? "\r\n" : "")});
        }
        return turns;
    }

    std::vector<std::string> clientLines_;
};

TEST(LogOnPlan, GivesTheTotals) {
    Dialogue dialogue{"S +OK ready", "C USER bob", "S +OK",      "C PASS secret",
                      "S +OK in",    "C STAT",     "S +OK 2 320"};
    const auto outcome = poplib::logOn(dialogue, "bob", "secret");
    ASSERT_TRUE(std::holds_alternative<poplib::MailboxTotals>(outcome));
    EXPECT_EQ(std::get<poplib::MailboxTotals>(outcome).messages, 2);
    EXPECT_EQ(std::get<poplib::MailboxTotals>(outcome).bytes, 320);
    dialogue.expectToBeSaid();
}

TEST(LogOnPlan, StopsWhereTheServerRefuses) {
    Dialogue name{"S +OK", "C USER bob", "S -ERR who"};
    EXPECT_EQ(std::get<poplib::LogOnRefused>(poplib::logOn(name, "bob", "secret")).text, "who");
    name.expectToBeSaid();
    Dialogue password{"S +OK", "C USER bob", "S +OK", "C PASS secret", "S -ERR [IN-USE] later"};
    EXPECT_EQ(std::get<poplib::LogOnRefused>(poplib::logOn(password, "bob", "secret")).text,
              "[IN-USE] later");
    password.expectToBeSaid();
}

TEST(LogOnPlan, WithoutTotalsIsNone) {
    for (const char* const answer : {"S -ERR", "S +OK none", "S +OK -1 0"}) {
        Dialogue dialogue{"S +OK", "C USER bob", "S +OK", "C PASS secret", "S +OK", "C STAT", answer};
        EXPECT_EQ(errorNumberOf([&] { poplib::logOn(dialogue, "bob", "secret"); }), errors::MailServerTrouble)
            << answer;
    }
}

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
