#include "components/smtplib/plans.h"

#include "components/smtplib/error_numbers.h"
#include "platform/runtime_error.h"

namespace smtplib {

using platform::RuntimeError;

namespace {
constexpr int kRefusedForGood = 5;

void mustNotBeRefused(const Event& event) {
    if (const auto* const refused = std::get_if<Refused>(&event)) {
        throw RuntimeError(numberOf(*refused));
    }
}

/** Whether the server has refused the command for good (5xx), so that another one may be tried. */
bool isUnknown(const Event& event) {
    const auto* const refused = std::get_if<Refused>(&event);
    return refused != nullptr && refused->reply.kind() == kRefusedForGood;
}
} // namespace

Extensions openSession(Exchange& exchange, const std::string& addressLiteral) {
    mustNotBeRefused(exchange.next());
    const Event hello = exchange.ask(ehloCommand(addressLiteral));
    if (isUnknown(hello)) {
        mustNotBeRefused(exchange.ask(heloCommand(addressLiteral)));
        return {};
    }
    mustNotBeRefused(hello);
    return extensionsOf(std::get<Accepted>(hello).reply);
}

void offerMessage(Exchange& exchange, const Envelope& envelope, const Extensions& extensions) {
    if (extensions.sizeLimit > 0 && envelope.messageBytes > extensions.sizeLimit) {
        throw RuntimeError(platform::errors::MessageTooLarge);
    }
    mustNotBeRefused(exchange.ask(mailCommand(envelope, extensions.size, extensions.eightBit)));
    for (const std::string& recipient : envelope.recipients) {
        mustNotBeRefused(exchange.ask(rcptCommand(recipient)));
    }
    mustNotBeRefused(exchange.ask(dataCommand()));
}

void awaitConfirmation(Exchange& exchange) {
    mustNotBeRefused(exchange.next());
}

} // namespace smtplib
