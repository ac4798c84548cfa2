#include "components/poplib/log_on_plan.h"

#include "components/poplib/apop.h"
#include "components/poplib/reply_text.h"
#include "components/sasl/attempt.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <limits>
#include <optional>
#include <string_view>

namespace poplib {

using platform::RuntimeError;
using transport::Security;
namespace errors = platform::errors;

namespace {
/** Runs the action, in whose place no other error of the network may be seen than this one. */
template <class Action>
void withTroubleAs(int error, const Action& action) {
    const int raised = platform::errorNumberOf(action);
    if (raised != 0) {
        throw RuntimeError(raised == errors::MailServerTrouble ? error : raised);
    }
}

/** Encrypts the connection with STLS (RFC 2595 section 4); false when the server refuses. */
bool startTls(Exchange& exchange) {
    bool accepted = false;
    // Whoever does not answer properly must not be spoken to in clear instead.
    withTroubleAs(errors::EncryptionFailed, [&] {
        accepted = ask(exchange, stlsCommand()).has_value();
        if (exchange.session().hasUnusedBytes()) {
            throw RuntimeError(errors::EncryptionFailed);
        }
        if (accepted) {
            exchange.encrypt();
        }
    });
    return accepted;
}

/** What is known of the server, or what it says when it is asked now. */
const Capabilities& learn(std::optional<Capabilities>& known, Exchange& exchange) {
    if (!known) {
        known = askCapabilities(exchange);
    }
    return *known;
}

// Names of ways to log on that are no mechanisms of AUTH.
constexpr std::string_view kApop = "APOP";
constexpr std::string_view kPassword = "USER";

/** The part of one log-on that follows the encryption. */
class LogOn {
  public:
    LogOn(Exchange& exchange, const sasl::Account& account, const Introduction& server)
        : exchange_(exchange), account_(account), server_(server) {}

    /** Returns the refusal, nothing when the server has accepted. */
    std::optional<LogOnRefused> run() {
        for (const std::string_view way : waysToLogOn(server_)) {
            if (way == kApop) {
                return proveByDigest(*apopTimestamp(server_.greeting));
            }
            if (way != kPassword && authenticate(way)) {
                return refused_;
            }
        }
        return showPassword();
    }

  private:
    /** Tries a mechanism; false when it cannot be used, so that another one may be tried. */
    bool authenticate(std::string_view mechanism) {
        sasl::Attempt attempt(mechanism, account_);
        if (!attempt.canBegin()) {
            return false;
        }
        constexpr std::size_t keywordSpacesAndLineEnd = 8;
        const std::string first =
            attempt.initialResponse(kMaximumCommandBytes - keywordSpacesAndLineEnd - mechanism.size());
        Event event = exchange_.ask(authCommand(mechanism, first));
        for (int challenges = 0; std::holds_alternative<GoOn>(event); ++challenges) {
            if (challenges == sasl::Attempt::kMaximumChallenges) {
                throw RuntimeError(errors::MailServerTrouble);
            }
            event = exchange_.ask(authResponseCommand(attempt.respond(std::get<GoOn>(event).text)));
        }
        const auto* const refusal = std::get_if<Refused>(&event);
        sasl::Verdict verdict = refusal == nullptr ? attempt.whenAccepted() : attempt.whenRefused();
        // Only a refusal without a reason can mean the mechanism.
        if (refusal != nullptr && verdict == sasl::Verdict::NotUsable && hasResponseCode(refusal->text)) {
            verdict = sasl::Verdict::Refused;
        }
        if (verdict == sasl::Verdict::ServerNotProven) {
            throw RuntimeError(errors::LogOnRefused);
        }
        if (verdict == sasl::Verdict::Refused) {
            refused_ = LogOnRefused{refusal == nullptr ? std::string() : refusal->text, !server_.encrypted};
        }
        return verdict != sasl::Verdict::NotUsable;
    }

    std::optional<LogOnRefused> proveByDigest(std::string_view timestamp) {
        return askedFor(apopCommand(account_.user, apopDigest(timestamp, account_.password)));
    }

    std::optional<LogOnRefused> showPassword() {
        Pop3Session& session = exchange_.session();
        session.submit(userCommand(account_.user));
        // A server that takes no password in clear does not offer USER, and is not shown one ahead.
        const bool ahead = server_.capabilities.pipelining && server_.capabilities.user;
        if (ahead) {
            session.setMaximumOutstanding(2);
            session.submit(passCommand(account_.password));
        }
        const auto refusedUser = refusalIn(exchange_.next());
        if (!ahead) {
            return refusedUser ? refusedUser : askedFor(passCommand(account_.password));
        }
        if (refusedUser) {
            skipReplyToPassword();
        }
        auto refused = refusedUser ? refusedUser : refusalIn(exchange_.next());
        session.setMaximumOutstanding(1);
        return refused;
    }

    /** Reads the reply to a password that went out behind a refused name, if there is one. */
    void skipReplyToPassword() {
        const int error = platform::errorNumberOf([this] { static_cast<void>(exchange_.nextSoon()); });
        // Whoever has refused the name may hang up without a word about the password.
        if (error != 0 && error != errors::MailServerTrouble) {
            throw RuntimeError(error);
        }
    }

    std::optional<LogOnRefused> askedFor(Command command) {
        return refusalIn(exchange_.ask(std::move(command)));
    }

    std::optional<LogOnRefused> refusalIn(const Event& event) const {
        const auto* const refusal = std::get_if<Refused>(&event);
        return refusal == nullptr ? std::nullopt
                                  : std::optional(LogOnRefused{refusal->text, !server_.encrypted});
    }

    Exchange& exchange_;
    const sasl::Account& account_;
    const Introduction& server_;
    std::optional<LogOnRefused> refused_;
};

MailboxTotals totalsOf(const std::optional<std::string>& reply) {
    if (!reply) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    const TwoNumbers numbers = twoNumbers(*reply);
    return {platform::checkedTo<std::int16_t>(numbers.first),
            platform::checkedTo<std::int32_t>(numbers.second)};
}

/** Keeps the line's size; a text that is too long to be one is asked for again when it is needed. */
void addSize(std::string_view line, SizeTexts& sizes) {
    constexpr std::size_t longest = 100; // bytes
    const auto numbered = numberedText(line);
    const bool isMessage =
        numbered && numbered->number > 0 && numbered->number <= std::numeric_limits<std::int16_t>::max();
    if (isMessage && numbered->text.size() <= longest) {
        sizes[numbered->number] = numbered->text;
    }
}

/** Reads the response to LIST, whose status line is due at once where it was sent ahead. */
SizeTexts readSizes(Exchange& exchange, bool sentAhead) {
    SizeTexts sizes;
    const Event status = sentAhead ? exchange.nextSoon() : exchange.next();
    if (!std::holds_alternative<Accepted>(status)) {
        return sizes;
    }
    for (;;) {
        const Event event = exchange.next();
        if (std::holds_alternative<ResponseEnded>(event)) {
            return sizes;
        }
        addSize(std::get<ListingLine>(event).text, sizes);
    }
}

/** Opens the mailbox of a server that has not said whether it answers commands that are sent ahead. */
std::variant<OpenMailbox, StartAgain> openByTrying(Exchange& exchange, const LogOnTerms& terms) {
    OpenMailbox mailbox;
    Pop3Session& session = exchange.session();
    session.submit(statCommand());
    session.submit(listAllCommand());
    session.setMaximumOutstanding(terms.pipelines ? 2 : 1);
    const Event stat = exchange.next();
    const auto* const accepted = std::get_if<Accepted>(&stat);
    mailbox.totals = totalsOf(accepted == nullptr ? std::nullopt : std::optional(accepted->text));
    const int error = platform::errorNumberOf([&] { mailbox.sizes = readSizes(exchange, terms.pipelines); });
    session.setMaximumOutstanding(1);
    if (error == errors::MailServerTrouble && terms.pipelines) {
        LogOnTerms without = terms;
        without.pipelines = false;
        return StartAgain{without};
    }
    if (error != 0) {
        throw RuntimeError(error);
    }
    mailbox.pipelines = terms.pipelines;
    return mailbox;
}
} // namespace

std::variant<Introduction, StartAgain> meet(Exchange& exchange, const LogOnTerms& terms) {
    Introduction server;
    server.greeting = std::get<Greeted>(exchange.next()).text;
    server.known = terms.known;
    Capabilities& can = server.capabilities;
    if (terms.asksForCapabilities) {
        const int error = platform::errorNumberOf([&] { can = learn(server.known.atFirst, exchange); });
        if (error == errors::MailServerTrouble && terms.security != Security::Demanded) {
            LogOnTerms without = terms;
            without.asksForCapabilities = false;
            return StartAgain{without};
        }
        if (error != 0) {
            throw RuntimeError(error == errors::MailServerTrouble ? errors::EncryptionNotOffered : error);
        }
    }
    bool& encrypted = server.encrypted;
    encrypted = terms.security == Security::FromTheStart;
    const bool wanted = terms.security == Security::Demanded || terms.security == Security::WhenOffered;
    if (wanted && can.stls) {
        encrypted = startTls(exchange);
        if (encrypted) {
            can = learn(server.known.behindStls, exchange);
        } else if (terms.security == Security::WhenOffered) {
            LogOnTerms inClear = terms;
            inClear.security = Security::Never;
            return StartAgain{inClear};
        }
    }
    if (terms.security == Security::Demanded && !encrypted) {
        throw RuntimeError(errors::EncryptionNotOffered);
    }
    return server;
}

std::vector<std::string_view> waysToLogOn(const Introduction& server) {
    const Capabilities& can = server.capabilities;
    std::vector<std::string_view> ways;
    const auto addIfOffered = [&](std::string_view mechanism) {
        if (can.offers(mechanism)) {
            ways.push_back(mechanism);
        }
    };
    addIfOffered("SCRAM-SHA-256");
    addIfOffered("SCRAM-SHA-1");
    if (!server.encrypted) {
        addIfOffered("CRAM-MD5");
        ways.push_back(apopTimestamp(server.greeting) ? kApop : kPassword);
        return ways;
    }
    if (can.known && !can.user) {
        addIfOffered("PLAIN");
    }
    ways.push_back(kPassword);
    return ways;
}

std::variant<OpenMailbox, LogOnRefused, StartAgain> logOn(Exchange& exchange, const sasl::Account& account,
                                                          const LogOnTerms& terms) {
    exchange.session().secrets().addPassword(account.password);
    auto met = meet(exchange, terms);
    if (auto* const again = std::get_if<StartAgain>(&met)) {
        return *again;
    }
    auto& server = std::get<Introduction>(met);
    const Capabilities& can = server.capabilities;
    if (can.utf8) {
        // Without it some servers give a stub for a message whose header has bytes beyond ASCII.
        static_cast<void>(ask(exchange, utf8Command()));
    }
    if (auto refused = LogOn(exchange, account, server).run()) {
        return *std::move(refused);
    }
    std::variant<OpenMailbox, StartAgain> opened;
    if (can.pipelining || !terms.listing) {
        const bool pipelines = (can.pipelining || server.known.pipelines) && terms.pipelines;
        opened = OpenMailbox{totalsOf(ask(exchange, statCommand())), pipelines, can.top, {}, {}};
    } else {
        opened = openByTrying(exchange, terms);
    }
    if (auto* const again = std::get_if<StartAgain>(&opened)) {
        return *again;
    }
    auto& mailbox = std::get<OpenMailbox>(opened);
    server.known.pipelines = mailbox.pipelines;
    mailbox.known = std::move(server.known);
    return std::move(mailbox);
}

} // namespace poplib
