// Every recorded dialogue, read by the session in pieces of every size, and played to the SMTP component.

#include "components/smtplib/error_numbers.h"
#include "components/smtplib/plans.h"
#include "tests/smtplib/smtp_fixture.h"
#include "tests/support/described_event.h"
#include "tests/support/pieces.h"
#include "tests/support/recorded_exchange.h"
#include "tests/support/transcript.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace {

using smtplib::SmtpSession;
using support::Transcript;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string kFolder = "smtp";

using Dialogue = support::RecordedExchange<SmtpSession>;

int numberOfFailure(const smtplib::Event* event, const SmtpSession& session) {
    if (event == nullptr) {
        return smtplib::numberOf(smtplib::FailureKind::Lost, session.mayHaveBeenSent());
    }
    const auto* const failed = std::get_if<smtplib::Failed>(event);
    return failed == nullptr ? 0 : smtplib::numberOf(failed->kind, session.mayHaveBeenSent());
}

/** Sends the message that all dialogues have in common. */
void sendMessage(Dialogue& dialogue, bool eightBit) {
    SmtpSession& session = dialogue.session();
    const auto opened = smtplib::openSession(dialogue, "[127.0.0.1]", {"bob", "secret", {}}, {});
    smtplib::offerMessage(dialogue,
                          {"bob@example.org", {"ann@example.org", "carl@example.org"}, 20, eightBit},
                          std::get<smtplib::OpenedSession>(opened));
    session.addText("Subject: a\r\n\r\n.d");
    session.addText("ot\r\n");
    session.submit(smtplib::endOfMessageCommand());
    smtplib::awaitConfirmation(dialogue);
}

using NameAndPieces = std::tuple<std::string, std::size_t>;

std::string nameWithPieces(const testing::TestParamInfo<NameAndPieces>& test) {
    const auto& [name, pieceBytes] = test.param;
    return support::testNameOf(name, pieceBytes);
}

class SmtpTranscriptInPieces : public testing::TestWithParam<NameAndPieces> {};

TEST_P(SmtpTranscriptInPieces, GivesItsEventsItsCommandsAndItsError) {
    const auto& [name, pieceBytes] = GetParam();
    const Transcript transcript = support::readTranscript(kFolder, name);
    Dialogue dialogue(transcript.turns, pieceBytes, support::described, numberOfFailure);
    dialogue.collectOutput();
    EXPECT_THAT(dialogue.sent(), IsEmpty()) << "the server speaks first";
    const int error = platform::errorNumberOf([&] { sendMessage(dialogue, transcript.eightBit); });
    if (error == 0 && dialogue.session().canQuit()) {
        dialogue.ask(smtplib::quitCommand());
    }
    dialogue.collectOutput();
    EXPECT_THAT(dialogue.sent(), ElementsAreArray(transcript.clientLines()));
    EXPECT_THAT(dialogue.events(), ElementsAreArray(transcript.events));
    EXPECT_EQ(error, transcript.error);
}

INSTANTIATE_TEST_SUITE_P(Dialogues, SmtpTranscriptInPieces,
                         testing::Combine(testing::ValuesIn(support::transcriptNames(kFolder)),
                                          testing::ValuesIn(support::kPieceSizes)),
                         nameWithPieces);

class SmtpTranscriptPlayed : public support::SmtpTest, public testing::WithParamInterface<NameAndPieces> {};

TEST_P(SmtpTranscriptPlayed, GivesItsErrorAndItsTrail) {
    const auto& [name, pieceBytes] = GetParam();
    const Transcript transcript = support::readTranscript(kFolder, name);
    support::ScriptedServer server(
        [&transcript, pieces = pieceBytes](support::Peer& peer) { support::play(transcript, peer, pieces); });
    fillIn();
    smtp.setBody(transcript.eightBit ? "\xc3\xa4" : "text");
    EXPECT_EQ(send(server), transcript.error);
    EXPECT_TRUE(server.waitForEndOf(1));
    std::vector<std::string> commands;
    for (const Transcript::Turn& turn : transcript.turns) {
        const std::string keyword = turn.text.substr(0, turn.text.find(' '));
        if (turn.speaker == Transcript::Speaker::Client && keyword.size() == 4) {
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
                         testing::Combine(testing::ValuesIn(support::transcriptNames(kFolder)),
                                          testing::Values(std::size_t{0}, std::size_t{1}, std::size_t{3})),
                         nameWithPieces);

} // namespace
