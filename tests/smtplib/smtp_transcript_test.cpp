// Every recorded dialogue, read by the session in pieces of every size, and played to the SMTP component.

#include "tests/smtplib/smtp_fixture.h"
#include "tests/smtplib/smtp_transcript.h"
#include "tests/support/pieces.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <tuple>
#include <vector>

namespace {

using SMTPLib::SmtpSession;
using support::SmtpTranscript;
using testing::ElementsAreArray;

std::string testName(std::string name) {
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

/** A session that does what the dialogues have the client do: one message, then the farewell. */
class Client {
  public:
    explicit Client(bool eightBit) : eightBit_(eightBit) {}

    void receive(std::string_view bytes, std::size_t pieceOctets) {
        support::forEachPiece(bytes, pieceOctets, [this](std::string_view piece) {
            session_.receive(piece);
            collectEvents();
        });
        goOn();
    }

    /** The next line of what the client sends. */
    std::string nextLine() {
        output_ += session_.takeOutput();
        const std::size_t end = std::min(output_.find("\r\n"), output_.size());
        std::string line = output_.substr(0, end);
        output_.erase(0, end + 2);
        return line;
    }

    /** True when the client has nothing more to say. */
    bool isSilent() { return session_.takeOutput().empty() && output_.empty(); }

    const std::vector<std::string>& events() const { return events_; }

  private:
    void collectEvents() {
        while (const auto event = session_.nextEvent()) {
            events_.push_back(support::described(*event));
        }
    }

    void goOn() {
        const auto state = session_.state();
        if (state == SmtpSession::State::Idle && !begun_) {
            begun_ = true;
            session_.begin({"bob@example.org", {"ann@example.org", "carl@example.org"}, 20, eightBit_});
        } else if (state == SmtpSession::State::Idle) {
            session_.quit();
        } else if (state == SmtpSession::State::Content) {
            session_.addContent("Subject: a\r\n\r\n.d");
            session_.addContent("ot\r\n");
            session_.endContent();
        }
        collectEvents();
    }

    SmtpSession session_;
    bool eightBit_;
    bool begun_ = false;
    std::string output_;
    std::vector<std::string> events_;
};

using NameAndPieces = std::tuple<std::string, std::size_t>;

std::string nameWithPieces(const testing::TestParamInfo<NameAndPieces>& test) {
    const auto& [name, pieceOctets] = test.param;
    const bool whole = pieceOctets == std::string_view::npos || pieceOctets == 0;
    return testName(name) + (whole ? "_Whole" : "_PiecesOf" + std::to_string(pieceOctets));
}

class SmtpTranscriptInPieces : public testing::TestWithParam<NameAndPieces> {};

TEST_P(SmtpTranscriptInPieces, GivesItsEventsAndItsCommands) {
    const auto& [name, pieceOctets] = GetParam();
    const SmtpTranscript transcript = support::readSmtpTranscript(name);
    Client client(transcript.eightBit);
    EXPECT_TRUE(client.isSilent()) << "the server speaks first";
    for (const SmtpTranscript::Turn& turn : transcript.turns) {
        if (turn.fromServer) {
            client.receive(turn.text, pieceOctets);
        } else {
            EXPECT_EQ(client.nextLine(), turn.text);
        }
    }
    EXPECT_TRUE(client.isSilent());
    EXPECT_THAT(client.events(), ElementsAreArray(transcript.events));
}

INSTANTIATE_TEST_SUITE_P(Dialogues, SmtpTranscriptInPieces,
                         testing::Combine(testing::ValuesIn(support::smtpTranscriptNames()),
                                          testing::ValuesIn(support::kPieceSizes)),
                         nameWithPieces);

class SmtpTranscriptPlayed : public support::SmtpTest, public testing::WithParamInterface<NameAndPieces> {};

TEST_P(SmtpTranscriptPlayed, GivesItsErrorAndItsTrail) {
    const auto& [name, pieceOctets] = GetParam();
    const SmtpTranscript transcript = support::readSmtpTranscript(name);
    support::ScriptedServer server([&transcript, pieces = pieceOctets](support::Peer& peer) {
        support::play(transcript, peer, pieces);
    });
    fillIn();
    smtp.setBody(transcript.eightBit ? "\xc3\xa4" : "text");
    EXPECT_EQ(send(server), transcript.error);
    EXPECT_TRUE(server.waitForEndOf(1));
    std::vector<std::string> commands;
    for (const SmtpTranscript::Turn& turn : transcript.turns) {
        const std::string keyword = turn.text.substr(0, turn.text.find(' '));
        if (!turn.fromServer && keyword.size() == 4) {
            commands.push_back("> " + keyword);
        }
    }
    std::vector<std::string> shown;
    for (const std::string& line : trail) {
        if (line.starts_with("> ") && line != "> .") {
            shown.push_back(line.substr(0, 6));
        }
    }
    EXPECT_THAT(shown, ElementsAreArray(commands));
}

INSTANTIATE_TEST_SUITE_P(Dialogues, SmtpTranscriptPlayed,
                         testing::Combine(testing::ValuesIn(support::smtpTranscriptNames()),
                                          testing::Values(std::size_t{0}, std::size_t{1}, std::size_t{3})),
                         nameWithPieces);

} // namespace
