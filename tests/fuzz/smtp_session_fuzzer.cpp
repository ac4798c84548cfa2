// However the network cuts the server's bytes, the session makes the same events and sends the same bytes.
//
// Input: number of pieces, one byte for the size of each, a byte for the message, and then what the server
// sends, in turns that a zero byte ends. Between two turns the client sends its output.

#include "components/smtplib/plans.h"
#include "platform/runtime_error.h"
#include "tests/fuzz/linked_mechanisms.h"
#include "tests/fuzz/turns.h"
#include "tests/support/described_event.h"

#include <string>
#include <variant>
#include <vector>

namespace {

using smtplib::SmtpSession;

/** Checks what holds for every event, whatever the server sends. */
void requireSense(const smtplib::Event& event) {
    if (const smtplib::Reply* const reply = smtplib::replyOf(event)) {
        fuzz::require(reply->kind() >= 2 && reply->kind() <= 5, "a reply has a code");
        fuzz::require(!reply->lines.empty(), "a reply has a line");
        for (const std::string& line : reply->lines) {
            fuzz::require(line.find('\n') == std::string::npos, "no line end in a line");
        }
    }
    if (const auto* const refused = std::get_if<smtplib::Refused>(&event)) {
        fuzz::require(refused->reply.code >= 400, "only 4xx and 5xx refuse");
    }
}

struct Run {
    std::vector<std::string> events;
    std::string sent;
    bool mayHaveBeenSent = false;
    int error = 0;

    bool operator==(const Run&) const = default;
};

/** Writes down what happens. */
class Dialogue : public fuzz::Turns<SmtpSession> {
  public:
    Dialogue(std::string_view bytes, const std::vector<std::size_t>& sizes)
        : Turns(bytes, sizes, platform::errors::SendingLost) {
        outputTaken = [this](const SmtpSession& session) { run.mayHaveBeenSent = session.mayHaveBeenSent(); };
    }

    smtplib::Event next() override {
        smtplib::Event event = Turns::next();
        requireSense(event);
        run.events.push_back(support::described(event));
        if (std::holds_alternative<smtplib::Failed>(event)) {
            throw platform::RuntimeError(platform::errors::SendingOutOfStep);
        }
        return event;
    }

    Run run;
};

/** One message, then the end of the session. */
void sendMessage(Dialogue& dialogue, bool large) {
    const auto outcome =
        smtplib::openSession(dialogue, "[127.0.0.1]", {"bob", "secret", "bob@example.org"}, {});
    const auto* const opened = std::get_if<smtplib::OpenedSession>(&outcome);
    if (opened == nullptr) {
        return;
    }
    smtplib::offerMessage(
        dialogue, {"bob@example.org", {"ann@example.org", "carl@example.org"}, large ? 1'000'000 : 100, true},
        *opened);
    dialogue.session().addText("text\r\n.\r\n");
    dialogue.session().submit(smtplib::endOfMessageCommand());
    smtplib::awaitConfirmation(dialogue);
    fuzz::require(dialogue.sent.find("\r\n..\r\n.\r\n") != std::string::npos,
                  "what is accepted was sent whole");
    dialogue.ask(smtplib::quitCommand());
}

Run play(std::string_view bytes, bool large, const std::vector<std::size_t>& sizes) {
    Dialogue dialogue(bytes, sizes);
    dialogue.run.error = platform::errorNumberOf([&] { sendMessage(dialogue, large); });
    dialogue.run.sent = dialogue.sent;
    return dialogue.run;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::FixedNonce nonce;
    fuzz::Input input(data, size);
    std::vector<std::size_t> sizes(1 + input.below(6));
    for (std::size_t& piece : sizes) {
        piece = 1 + input.below(40);
    }
    const bool large = input.below(2) == 1;
    const Run whole = play(input.rest(), large, {});
    fuzz::require(play(input.rest(), large, sizes) == whole, "pieces change nothing");
    fuzz::require(play(input.rest(), large, {1}) == whole, "single octets change nothing");
    return 0;
}
