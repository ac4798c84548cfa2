// However the network cuts the server's bytes, the session makes the same events and sends the same octets.
//
// Input: number of pieces, one byte for the size of each, a byte for the message, and then what the server
// says, in turns that a zero byte ends. Between two turns the client sends what it has to.

#include "components/smtplib/smtp_session.h"
#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

using SMTPLib::SmtpSession;
using State = SmtpSession::State;

struct Describer {
    std::string operator()(const SMTPLib::Replied& replied) const {
        fuzz::require(replied.reply.kind() >= 2 && replied.reply.kind() <= 5, "a reply has a code");
        fuzz::require(!replied.reply.lines.empty(), "a reply has a line");
        std::string text = "replied" + std::to_string(replied.reply.code);
        for (const std::string& line : replied.reply.lines) {
            fuzz::require(line.find('\n') == std::string::npos, "no line end in a line");
            text += '\n' + line;
        }
        return text;
    }

    std::string operator()(const SMTPLib::Opened&) const { return "opened"; }

    std::string operator()(const SMTPLib::ContentWanted&) const { return "content wanted"; }

    std::string operator()(const SMTPLib::Accepted&) const { return "accepted"; }

    std::string operator()(const SMTPLib::FarewellSaid&) const { return "farewell"; }

    std::string operator()(const SMTPLib::TooLarge&) const { return "too large"; }

    std::string operator()(const SMTPLib::Refused& refused) const {
        fuzz::require(refused.code >= 400, "only 4xx and 5xx refuse");
        return "refused" + std::to_string(static_cast<int>(refused.stage)) + ' ' +
               std::to_string(refused.code);
    }

    std::string operator()(const SMTPLib::Failed& failed) const {
        return "failed" + std::to_string(static_cast<int>(failed.kind));
    }
};

struct Run {
    std::vector<std::string> events;
    std::string sent;
    bool mayHaveBeenSent = false;

    bool operator==(const Run&) const = default;
};

/** One message, then the farewell. */
class Client {
  public:
    explicit Client(bool large) : octets_(large ? 1'000'000 : 100) {}

    void receive(std::string_view bytes) {
        session_.receive(bytes);
        collectEvents();
    }

    void speak() {
        if (session_.state() == State::Idle && !begun_) {
            begun_ = true;
            session_.begin({"bob@example.org", {"ann@example.org", "carl@example.org"}, octets_, true});
        } else if (session_.canQuit()) {
            session_.quit();
        } else if (session_.state() == State::Content) {
            session_.addContent("text\r\n.\r\n");
            session_.endContent();
        }
        collectEvents();
        run_.sent += session_.takeOutput();
        run_.mayHaveBeenSent = session_.mayHaveBeenSent();
    }

    const Run& run() const { return run_; }

  private:
    void collectEvents() {
        while (const auto event = session_.nextEvent()) {
            run_.events.push_back(std::visit(Describer{}, *event));
            if (std::holds_alternative<SMTPLib::Accepted>(*event)) {
                fuzz::require(run_.sent.find("\r\n..\r\n.\r\n") != std::string::npos,
                              "what is accepted was sent whole");
            }
        }
    }

    SmtpSession session_;
    std::int64_t octets_;
    bool begun_ = false;
    Run run_;
};

Run play(std::string_view bytes, bool large, const std::vector<std::size_t>& sizes) {
    Client client(large);
    std::size_t index = 0;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\0'), bytes.size());
        for (std::string_view turn = bytes.substr(0, end); !turn.empty(); ++index) {
            const std::size_t size = sizes.empty() ? turn.size() : sizes[index % sizes.size()];
            client.receive(turn.substr(0, size));
            turn.remove_prefix(std::min(size, turn.size()));
        }
        client.speak();
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    return client.run();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
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
