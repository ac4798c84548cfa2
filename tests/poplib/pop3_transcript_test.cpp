// Every recorded dialogue, read by the session in pieces of every size, and played to the POP3 component.

#include "tests/poplib/pop_fixture.h"
#include "tests/poplib/transcript_commands.h"
#include "tests/support/pieces.h"
#include "tests/support/transcript.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <tuple>
#include <vector>

namespace {

using poplib::Pop3Session;
namespace errors = platform::errors;
using support::Transcript;
using testing::ElementsAreArray;
using testing::Values;
using testing::ValuesIn;

const std::string kFolder = "pop3";

using NameAndPieces = std::tuple<std::string, std::size_t>;

constexpr std::size_t kWhole = std::string_view::npos;

std::string nameWithPieces(const testing::TestParamInfo<NameAndPieces>& test) {
    const auto& [name, pieceBytes] = test.param;
    return support::testNameOf(name, pieceBytes);
}

/** Feeds the bytes in pieces and appends the events that they make. */
void feed(Pop3Session& session, std::string_view bytes, std::size_t pieceBytes,
          std::vector<std::string>& events) {
    support::forEachPiece(bytes, pieceBytes, [&](std::string_view piece) {
        session.receive(piece);
        while (const auto event = session.nextEvent()) {
            events.push_back(support::described(*event));
        }
    });
}

class Pop3TranscriptInPieces : public testing::TestWithParam<NameAndPieces> {};

TEST_P(Pop3TranscriptInPieces, GivesItsEventsAndItsCommands) {
    const auto& [name, pieceBytes] = GetParam();
    const Transcript transcript = support::readTranscript(kFolder, name);
    Pop3Session session;
    for (const poplib::Command& command : support::commandsOf(transcript)) {
        session.submit(command);
    }
    EXPECT_EQ(session.takeOutput(), "") << "the server speaks first";
    std::vector<std::string> events;
    for (const Transcript::Turn& turn : transcript.turns) {
        if (turn.speaker == Transcript::Speaker::Server) {
            feed(session, turn.text, pieceBytes, events);
        } else {
            EXPECT_EQ(session.takeOutput(), turn.text + "\r\n");
        }
    }
    EXPECT_EQ(session.takeOutput(), "");
    EXPECT_THAT(events, ElementsAreArray(transcript.events));
}

INSTANTIATE_TEST_SUITE_P(Dialogues, Pop3TranscriptInPieces,
                         testing::Combine(ValuesIn(support::transcriptNames(kFolder)),
                                          ValuesIn(support::kPieceSizes)),
                         nameWithPieces);

class PipelinedPop3Transcript : public testing::TestWithParam<std::string> {};

/** Plays the dialogue with up to eight commands outstanding, and the replies in pieces of seven bytes. */
std::vector<std::string> eventsOfPipelinedSession(const Transcript& transcript, std::string& output) {
    Pop3Session session;
    session.setMaximumOutstanding(8);
    for (const poplib::Command& command : support::commandsOf(transcript)) {
        session.submit(command);
    }
    std::vector<std::string> events;
    const std::string bytes = transcript.serverBytes();
    const std::size_t greeting = bytes.find('\n') + 1;
    feed(session, std::string_view(bytes).substr(0, greeting), std::string_view::npos, events);
    std::string_view answers = std::string_view(bytes).substr(greeting);
    output = session.takeOutput();
    while (!answers.empty()) {
        feed(session, answers.substr(0, 7), 7, events);
        answers.remove_prefix(std::min<std::size_t>(7, answers.size()));
        output += session.takeOutput();
    }
    return events;
}

/** Dialogues in which the client sends commands, as the greeting allows it. */
std::vector<std::string> namesWithCommands() {
    std::vector<std::string> names = support::transcriptNames(kFolder);
    std::erase_if(names, [](const std::string& name) {
        return support::readTranscript(kFolder, name).clientLines().empty();
    });
    return names;
}

TEST_P(PipelinedPop3Transcript, GivesTheSameEventsAndCommands) {
    const Transcript transcript = support::readTranscript(kFolder, GetParam());
    std::string output;
    EXPECT_THAT(eventsOfPipelinedSession(transcript, output), ElementsAreArray(transcript.events));
    std::string expected;
    for (const std::string& line : transcript.clientLines()) {
        expected += line + "\r\n";
    }
    EXPECT_EQ(output, expected);
}

/**
 * Dialogues without DELE: before a deletion the component asks for more than they answer. Deletions have
 * tests of their own.
 */
std::vector<std::string> namesWithoutDeletion() {
    std::vector<std::string> names = support::transcriptNames(kFolder);
    std::erase_if(names, [](const std::string& name) { return name.starts_with("deletion"); });
    return names;
}

class Pop3TranscriptPlayed : public support::PopTest, public testing::WithParamInterface<NameAndPieces> {
  protected:
    /** Makes the component do what the client's lines say; returns the error that ends it, 0 for none. */
    int perform(const std::vector<poplib::Command>& commands) {
        using poplib::CommandKind;
        const poplib::Command* before = nullptr;
        for (const poplib::Command& command : commands) {
            const bool insteadOfTop = before != nullptr && before->kind == CommandKind::Top &&
                                      command.kind == CommandKind::Retr &&
                                      before->messageNumber == command.messageNumber;
            const int error = insteadOfTop ? 0 : perform(command);
            if (error != 0) {
                return error;
            }
            before = &command;
        }
        return 0;
    }

  private:
    int perform(const poplib::Command& command) {
        using poplib::CommandKind;
        using poplib::Request;
        if (command.messageNumber != 0) {
            pop.setCurrentMessage(static_cast<std::int16_t>(command.messageNumber));
        }
        pop.setBodyLineLimit(command.bodyLineLimit);
        switch (command.kind) {
        case CommandKind::List:
            return platform::errorNumberOf([this] { pop.currentMessageSize(); });
        case CommandKind::Top:
        case CommandKind::Retr:
            return request(Request::RetrieveCurrentMessage);
        case CommandKind::Quit:
            return request(Request::LogOffAndDisconnect);
        default:
            return 0; // part of the log-on or the log-off
        }
    }
};

/** The events of the dialogue that the POP3 component raises: header and body lines. */
std::vector<std::string> contentOf(const Transcript& transcript) {
    std::vector<std::string> content;
    std::copy_if(
        transcript.events.begin(), transcript.events.end(), std::back_inserter(content),
        [](const std::string& event) { return event.starts_with("header ") || event.starts_with("body "); });
    return content;
}

TEST_P(Pop3TranscriptPlayed, GivesItsCommandsItsContentAndItsError) {
    const auto& [name, pieceBytes] = GetParam();
    const Transcript transcript = support::readTranscript(kFolder, name);
    const std::vector<std::string> lines = transcript.clientLines();
    for (const std::string& line : lines) {
        if (line.starts_with("PASS ")) {
            pop.setLoginPassword(line.substr(5));
        }
    }
    support::ScriptedServer server(
        [&transcript, pieces = pieceBytes](support::Peer& peer) { support::play(transcript, peer, pieces); });
    pop.setMailServer(server.address());
    int error = logOn();
    if (error == 0) {
        error = perform(support::commandsOf(transcript));
    }
    EXPECT_EQ(error, transcript.error);
    EXPECT_EQ(logOff(), 0);
    EXPECT_TRUE(server.waitForEndOf(1));
    std::vector<std::string> heard = server.commands();
    // This server hangs up after a refusal, so the QUIT that follows one may or may not reach it.
    const bool refused = error == errors::LogOnRefused || error == errors::MailServerBusy;
    if (refused && heard.back() == "QUIT") {
        heard.pop_back();
    }
    EXPECT_THAT(heard, ElementsAreArray(lines));
    EXPECT_THAT(content, ElementsAreArray(contentOf(transcript)));
}

INSTANTIATE_TEST_SUITE_P(Dialogues, PipelinedPop3Transcript, ValuesIn(namesWithCommands()),
                         [](const auto& test) { return support::testNameOf(test.param); });

INSTANTIATE_TEST_SUITE_P(Dialogues, Pop3TranscriptPlayed,
                         testing::Combine(ValuesIn(namesWithoutDeletion()),
                                          Values(kWhole, std::size_t{1}, std::size_t{3})),
                         nameWithPieces);

} // namespace
