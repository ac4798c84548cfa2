#include "components/smtplib/plans.h"

#include "components/smtplib/error_numbers.h"
#include "platform/runtime_error.h"

namespace smtplib {

using platform::RuntimeError;
using transport::Security;
namespace errors = platform::errors;

namespace {
constexpr int kRefusedForGood = 5;

void mustNotBeRefused(const Event& event) {
    if (const auto* const refused = std::get_if<Refused>(&event)) {
        throw RuntimeError(numberOf(*refused));
    }
}

/** The same for a command that the server may refuse because of what came before it. */
void mustNotBeRefused(const Event& event, const OpenedSession& opened) {
    if (const auto* const refused = std::get_if<Refused>(&event)) {
        throw RuntimeError(numberOf(*refused, opened.logOn, opened.encrypted));
    }
}

/** Whether the server has refused the command for good (5xx), so that another one may be tried. */
bool isUnknown(const Event& event) {
    const auto* const refused = std::get_if<Refused>(&event);
    return refused != nullptr && refused->reply.kind() == kRefusedForGood;
}

Extensions sayHello(Exchange& exchange, const std::string& addressLiteral) {
    const Event hello = exchange.ask(ehloCommand(addressLiteral));
    if (isUnknown(hello)) {
        mustNotBeRefused(exchange.ask(heloCommand(addressLiteral)));
        return {};
    }
    mustNotBeRefused(hello);
    return extensionsOf(std::get<Accepted>(hello).reply);
}

bool isTrouble(int error) noexcept {
    return error == errors::SendingLost || error == errors::SendingTimedOut ||
           error == errors::SendingOutOfStep;
}

/** Encrypts the connection with STARTTLS (RFC 3207 section 4); false when the server refuses. */
bool startTls(Exchange& exchange) {
    bool accepted = false;
    const int error = platform::errorNumberOf([&] {
        accepted = !std::holds_alternative<Refused>(exchange.ask(startTlsCommand()));
        if (exchange.session().hasUnusedBytes()) {
            throw RuntimeError(errors::EncryptionFailed);
        }
        if (accepted) {
            exchange.encrypt();
        }
    });
    if (error != 0) {
        // Whoever does not answer properly must not be spoken to in clear instead.
        throw RuntimeError(isTrouble(error) ? errors::EncryptionFailed : error);
    }
    return accepted;
}

/** The reply to the first command behind the log-on. */
Event firstReply(Exchange& exchange, LogOnState logOn) {
    Event event;
    const int error = platform::errorNumberOf([&] { event = exchange.next(); });
    if (error != 0) {
        throw RuntimeError(error == errors::SendingLost ? numberOfLoss(logOn) : error);
    }
    return event;
}

/** Most commands that are outstanding at once. */
constexpr std::size_t kMaximumAhead = 100;

/**
 * Forgets the commands that wait, and reads the replies to those that were sent ahead of a refusal, so that
 * the session can be ended properly. What goes wrong with that makes no difference any more.
 */
void readRepliesLeft(Exchange& exchange) {
    exchange.session().forgetWaiting();
    static_cast<void>(platform::errorNumberOf([&exchange] {
        while (exchange.session().outstanding() > 0 &&
               exchange.session().state() != SmtpSession::State::Over) {
            exchange.nextSoon();
        }
    }));
}
} // namespace

std::variant<OpenedSession, StartAgainInClear> openSession(Exchange& exchange,
                                                           const std::string& addressLiteral,
                                                           const Account& account,
                                                           const SessionTerms& terms) {
    exchange.session().secrets().addPassword(account.password);
    mustNotBeRefused(exchange.next());
    OpenedSession opened;
    opened.extensions = sayHello(exchange, addressLiteral);
    opened.encrypted = terms.security == Security::FromTheStart;
    const bool wanted = terms.security == Security::Demanded || terms.security == Security::WhenOffered;
    if (wanted && opened.extensions.startTls) {
        opened.encrypted = startTls(exchange);
        if (opened.encrypted) {
            opened.extensions = sayHello(exchange, addressLiteral);
        } else if (terms.security == Security::WhenOffered) {
            return StartAgainInClear{};
        }
    }
    if (terms.security == Security::Demanded && !opened.encrypted) {
        throw RuntimeError(errors::EncryptionNotOffered);
    }
    opened.logOn =
        logOn(exchange, account, opened.extensions, channelOf(opened.encrypted, terms.toThisComputer));
    return opened;
}

void offerMessage(Exchange& exchange, const Envelope& envelope, const OpenedSession& opened) {
    const Extensions& extensions = opened.extensions;
    if (extensions.sizeLimit > 0 && envelope.messageBytes > extensions.sizeLimit) {
        throw RuntimeError(errors::MessageTooLarge);
    }
    SmtpSession& session = exchange.session();
    session.setMaximumOutstanding(extensions.pipelining ? kMaximumAhead : 1);
    session.submit(mailCommand(envelope, extensions.size, extensions.eightBit));
    for (const std::string& recipient : envelope.recipients) {
        session.submit(rcptCommand(recipient));
    }
    const Event sender = firstReply(exchange, opened.logOn);
    for (std::size_t replies = 0; replies <= envelope.recipients.size(); ++replies) {
        const Event event = replies == 0 ? sender : exchange.next();
        if (std::holds_alternative<Refused>(event)) {
            readRepliesLeft(exchange);
            mustNotBeRefused(event, opened);
        }
    }
    session.setMaximumOutstanding(1);
    // Only now is it certain that all recipients get the message, or none.
    mustNotBeRefused(exchange.ask(dataCommand()), opened);
}

void awaitConfirmation(Exchange& exchange) {
    mustNotBeRefused(exchange.next());
}

} // namespace smtplib
