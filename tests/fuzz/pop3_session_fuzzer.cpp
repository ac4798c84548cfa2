// However the network cuts the server's bytes, the session makes the same events and sends the same commands.
//
// Input: number of commands, one byte for each, number of pieces, one byte for the size of each, and what the
// server sends after its greeting.

#include "components/poplib/capabilities.h"
#include "components/poplib/pop3_session.h"
#include "components/poplib/reply_text.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/described_event.h"

#include <string>
#include <variant>
#include <vector>

namespace {

using poplib::Pop3Session;

poplib::Command command(std::size_t choice) {
    switch (choice) {
    case 0:
        return poplib::userCommand("bob");
    case 1:
        return poplib::passCommand("secret");
    case 2:
        return poplib::statCommand();
    case 3:
        return poplib::listCommand(1);
    case 4:
        return poplib::topCommand(1, 25);
    case 5:
        return poplib::retrCommand(1);
    case 6:
        return poplib::retrCommand(1, 2);
    case 7:
        return poplib::deleCommand(1);
    case 8:
        return poplib::quitCommand();
    case 9:
        return poplib::uidlCommand();
    case 10:
        return poplib::authCommand("PLAIN", "");
    case 11:
        return poplib::authResponseCommand("*");
    case 12:
        return poplib::capaCommand();
    case 13:
        return poplib::listAllCommand();
    default:
        return poplib::stlsCommand();
    }
}

/** Checks what holds for every event, whatever the server sends. */
struct Requirements {
    void operator()(const poplib::HeaderLine& header) const {
        fuzz::require(header.field.find(':') == std::string::npos, "no colon in a field's name");
        fuzz::require(header.value.find("\r\n") == std::string::npos, "no line end in a value");
    }

    void operator()(const poplib::BodyLine& body) const {
        fuzz::require(body.text.find("\r\n") == std::string::npos, "no line end in a body line");
        fuzz::require(body.bytesTransferred >= static_cast<std::int64_t>(body.text.size()) + 2,
                      "a line counts towards the bytes transferred");
    }

    void operator()(const poplib::ListingLine& line) const {
        fuzz::require(line.text.find("\r\n") == std::string::npos, "no line end in a listing's line");
        poplib::Capabilities capabilities;
        capabilities.add(line.text);
        for (const std::string& mechanism : capabilities.mechanisms) {
            fuzz::require(mechanism.find_first_of(" \t") == std::string::npos, "a mechanism is one word");
        }
        const auto numbered = poplib::numberedText(line.text);
        fuzz::require(!numbered || numbered->text.size() < line.text.size(), "a size stands behind a number");
    }

    template <class Other>
    void operator()(const Other& /*event*/) const {}
};

struct Run {
    std::vector<std::string> events;
    std::string sent;

    bool operator==(const Run&) const = default;
};

/** All commands are outstanding before the server answers the first one, as with pipelining. */
Run play(const std::vector<std::size_t>& choices, std::string_view bytes,
         const std::vector<std::size_t>& sizes) {
    Pop3Session session;
    session.setMaximumOutstanding(choices.size() + 1);
    for (const std::size_t choice : choices) {
        session.submit(command(choice));
    }
    Run run;
    const auto receive = [&](std::string_view piece) {
        session.receive(piece);
        while (const auto event = session.nextEvent()) {
            std::visit(Requirements{}, *event);
            run.events.push_back(support::described(*event));
        }
        run.sent += session.takeOutput();
    };
    receive("+OK ready\r\n");
    for (std::size_t index = 0; !bytes.empty(); ++index) {
        const std::size_t size = sizes.empty() ? bytes.size() : sizes[index % sizes.size()];
        receive(bytes.substr(0, size));
        bytes.remove_prefix(std::min(size, bytes.size()));
    }
    return run;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    std::vector<std::size_t> choices(input.below(12));
    for (std::size_t& choice : choices) {
        choice = input.below(15);
    }
    std::vector<std::size_t> sizes(1 + input.below(6));
    for (std::size_t& piece : sizes) {
        piece = 1 + input.below(40);
    }
    const Run whole = play(choices, input.rest(), {});
    fuzz::require(play(choices, input.rest(), sizes) == whole, "pieces change nothing");
    fuzz::require(play(choices, input.rest(), {1}) == whole, "single octets change nothing");
    return 0;
}
