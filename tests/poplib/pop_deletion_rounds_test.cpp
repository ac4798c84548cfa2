// Many rounds of listing and deleting while a second client deletes and adds, on servers with good, bad and
// no unique-ids. A deleted message must be the one that was listed under its number.

#include "tests/poplib/pop_fixture.h"
#include "tests/support/pop3_script.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using support::Peer;
using support::Pop3Mailbox;
using support::PopTest;
using support::ScriptedServer;
namespace errors = platform::errors;

enum class Ids { Good, TheNumbers, AllTheSame, Reused, OfTheHeader, None };

struct Server {
    const char* name;
    Ids ids;
    bool knowsTop;
};

/** The mailbox of the test and what is known of each of its messages. */
class Mailbox {
  public:
    explicit Mailbox(unsigned seed) : random_(seed) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    /** Few senders, few sizes and copies: sizes and headers of different messages often agree. */
    void deliver() {
        std::string text;
        if (!texts_.empty() && below(8) == 0) {
            text = texts_[below(static_cast<unsigned>(texts_.size()))];
        } else {
            const std::string name(1, static_cast<char>('a' + below(4)));
            text = "From: " + name + "@example.org\r\nSubject: news\r\n\r\n";
            text += std::string(1 + below(3), static_cast<char>('0' + below(3))) + "\r\n";
        }
        proper.deliver(text);
        texts_.push_back(std::move(text));
        good_.push_back("id" + std::to_string(++delivered_));
        reused_.push_back(smallestFreeId());
    }

    void remove(std::size_t number) {
        proper.remove(number);
        forget(number);
    }

    /** Removes the message from the list, as the client has deleted it. */
    void forget(std::size_t number) {
        const auto index = static_cast<std::ptrdiff_t>(number) - 1;
        texts_.erase(texts_.begin() + index);
        good_.erase(good_.begin() + index);
        reused_.erase(reused_.begin() + index);
    }

    std::string idsAnswer(Ids ids) const {
        std::string answer = "+OK\r\n";
        for (std::size_t index = 0; index < texts_.size(); ++index) {
            const std::string number = std::to_string(index + 1);
            const std::string id = ids == Ids::Good         ? good_[index]
                                   : ids == Ids::TheNumbers ? number
                                   : ids == Ids::AllTheSame ? "same"
                                   : ids == Ids::Reused     ? "slot" + std::to_string(reused_[index])
                                                            : texts_[index].substr(6, 1);
            answer.append(number).append(" ").append(id).append("\r\n");
        }
        return ids == Ids::None ? "-ERR what is that\r\n" : answer + ".\r\n";
    }

    const std::vector<std::string>& texts() const { return texts_; }

    const std::vector<std::string>& identities() const { return good_; }

    Pop3Mailbox proper;

  private:
    int smallestFreeId() const {
        int id = 1;
        while (std::find(reused_.begin(), reused_.end(), id) != reused_.end()) {
            ++id;
        }
        return id;
    }

    std::mt19937 random_;
    int delivered_ = 0;
    std::vector<std::string> texts_;
    std::vector<std::string> good_;
    std::vector<int> reused_;
};

class DeletionRounds : public PopTest, public testing::WithParamInterface<Server> {
  protected:
    DeletionRounds() {
        mailbox.proper.on("UIDL", [this](Peer& peer) { peer.send(mailbox.idsAnswer(GetParam().ids)); });
        if (!GetParam().knowsTop) {
            mailbox.proper.answer("TOP", "-ERR what is that\r\n");
        }
        pop.setMailServer(server.address());
    }

    int deleteInASession(std::size_t number) {
        if (const int error = logOn(); error != 0) {
            return error;
        }
        const int error = remove(static_cast<std::int16_t>(number));
        const int quit = logOff();
        return error != 0 ? error : quit;
    }

    /** What the second client does between the listing and a deletion. */
    void interfere() {
        for (unsigned action = mailbox.below(3); action > 0; --action) {
            if (mailbox.texts().empty() || mailbox.below(2) == 0) {
                mailbox.deliver();
            } else {
                mailbox.remove(1 + mailbox.below(static_cast<unsigned>(mailbox.texts().size())));
            }
        }
    }

    Mailbox mailbox{20260302};
    ScriptedServer server{mailbox.proper};
};

TEST_P(DeletionRounds, DeleteNothingButWhatWasListed) {
    int deleted = 0;
    int refused = 0;
    constexpr int rounds = support::fewerIfSanitized(300, 4);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        while (mailbox.texts().size() < 5) {
            mailbox.deliver();
        }
        ASSERT_EQ(listing(), 0);
        std::vector<std::string> listed = mailbox.texts();
        std::vector<std::string> identities = mailbox.identities();
        for (int deletion = 0; deletion < 2; ++deletion) {
            interfere();
            const bool unchanged = identities == mailbox.identities();
            const std::size_t number = 1 + mailbox.below(static_cast<unsigned>(listed.size()));
            const std::vector<std::string> before = mailbox.texts();
            const int error = deleteInASession(number);
            if (error != 0) {
                ASSERT_EQ(error, errors::AnotherMessage);
                ASSERT_EQ(mailbox.proper.messages(), before);
                ASSERT_FALSE(unchanged && GetParam().ids != Ids::Reused && GetParam().ids != Ids::OfTheHeader)
                    << "nothing had changed";
                ++refused;
                continue;
            }
            ASSERT_LE(number, before.size());
            ASSERT_EQ(before[number - 1], listed[number - 1]) << "a wrong message is gone";
            ASSERT_TRUE(GetParam().ids != Ids::Good ||
                        mailbox.identities()[number - 1] == identities[number - 1])
                << "another copy is gone";
            mailbox.forget(number);
            ASSERT_EQ(mailbox.proper.messages(), mailbox.texts());
            listed.erase(listed.begin() + static_cast<std::ptrdiff_t>(number) - 1);
            identities.erase(identities.begin() + static_cast<std::ptrdiff_t>(number) - 1);
            ++deleted;
        }
    }
    // Neither does the guard refuse everything, nor has the second client been idle.
    EXPECT_GT(deleted, rounds / 3);
    EXPECT_GT(refused, rounds / 3);
}

INSTANTIATE_TEST_SUITE_P(
    Servers, DeletionRounds,
    testing::Values(Server{"GoodIds", Ids::Good, true}, Server{"IdsThatAreNumbers", Ids::TheNumbers, true},
                    Server{"IdsAllTheSame", Ids::AllTheSame, true}, Server{"ReusedIds", Ids::Reused, true},
                    Server{"IdsOfTheHeader", Ids::OfTheHeader, true}, Server{"NoIds", Ids::None, true},
                    Server{"NumbersWithoutTop", Ids::TheNumbers, false},
                    Server{"NeitherIdsNorTop", Ids::None, false}),
    [](const auto& test) { return test.param.name; });

} // namespace
