// Whatever a POP3 server says, the log-on ends, and the password crosses the network in clear only where it
// may.
//
// Input: one byte for the spelling of the server's name, one for what is known of the server, number of
// pieces, one byte for the size of each, and then what the server sends, in turns that a zero byte ends.

#include "components/poplib/log_on_plan.h"
#include "tests/fuzz/linked_mechanisms.h"
#include "tests/fuzz/turns.h"
#include "tests/support/described_event.h"

#include <QByteArray>

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace {

using transport::Security;

constexpr std::string_view kPassword = "pencil-and-paper";
constexpr std::array kSpellings{Security::FromTheStart, Security::Demanded, Security::WhenOffered,
                                Security::Never};

/** As the component does it, a session that has failed raises an error. */
class Dialogue : public fuzz::Turns<poplib::Pop3Session> {
  public:
    Dialogue(std::string_view bytes, const std::vector<std::size_t>& sizes)
        : Turns(bytes, sizes, platform::errors::MailServerTrouble) {}

    poplib::Event next() override {
        poplib::Event event = Turns::next();
        if (const auto* const failed = std::get_if<poplib::Failed>(&event)) {
            const bool tooLarge = failed->kind == poplib::FailureKind::TooLarge;
            throw platform::RuntimeError(tooLarge ? platform::errors::OutOfMemory
                                                  : platform::errors::MailServerTrouble);
        }
        return event;
    }
};

struct Run {
    std::string sent;
    std::size_t outcome = std::variant_npos;
    int error = 0;

    bool operator==(const Run&) const = default;
};

poplib::KnownServer known(std::size_t choice) {
    poplib::KnownServer server;
    if (choice > 0) {
        server.atFirst =
            poplib::Capabilities{.known = true, .stls = choice == 2, .user = true, .pipelining = true};
    }
    return server;
}

Run play(std::string_view bytes, Security security, std::size_t knowledge,
         const std::vector<std::size_t>& sizes) {
    Dialogue turns(bytes, sizes);
    Run run;
    run.error = platform::errorNumberOf([&] {
        poplib::LogOnTerms terms;
        terms.security = security;
        terms.listing = true;
        terms.known = known(knowledge);
        run.outcome = poplib::logOn(turns, {"bob", std::string(kPassword)}, terms).index();
    });
    if (security == Security::Demanded) {
        const QByteArray coded = QByteArray(kPassword.data(), kPassword.size()).toBase64();
        fuzz::require(turns.sentInClear().find(kPassword) == std::string_view::npos &&
                          turns.sentInClear().find(coded.constData()) == std::string_view::npos,
                      "no password before the encryption that was demanded");
    }
    run.sent = std::move(turns.sent);
    return run;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::FixedNonce nonce;
    fuzz::Input input(data, size);
    const Security security = kSpellings.at(input.below(kSpellings.size()));
    const std::size_t knowledge = input.below(3);
    std::vector<std::size_t> sizes(1 + input.below(6));
    for (std::size_t& piece : sizes) {
        piece = 1 + input.below(40);
    }
    const Run whole = play(input.rest(), security, knowledge, {});
    fuzz::require(play(input.rest(), security, knowledge, sizes) == whole, "pieces change nothing");
    fuzz::require(play(input.rest(), security, knowledge, {1}) == whole, "single octets change nothing");
    return 0;
}
