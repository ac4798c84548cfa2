#include "components/smtplib/log_on.h"

#include "components/sasl/attempt.h"
#include "platform/runtime_error.h"

#include <string_view>
#include <vector>

namespace smtplib {

using platform::RuntimeError;
namespace errors = platform::errors;

namespace {
std::vector<std::string_view> mechanismsFor(Channel channel) {
    switch (channel) {
    case Channel::InClear:
        return {"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5"};
    case Channel::InClearToThisComputer:
        return {"SCRAM-SHA-256", "SCRAM-SHA-1", "CRAM-MD5", "PLAIN", "LOGIN"};
    case Channel::Encrypted:
        break;
    }
    return {"SCRAM-SHA-256", "SCRAM-SHA-1", "PLAIN", "LOGIN", "CRAM-MD5"};
}

/** 504 and 534 say that the mechanism is not known or too weak, 538 that it needs encryption. */
bool isAboutMechanism(const Reply& reply) noexcept {
    return reply.code == 504 || reply.code == 534 || reply.code == 538;
}

/** Returns NoWay when the mechanism cannot be used with this server, so that another one may be tried. */
LogOnState authenticate(Exchange& exchange, std::string_view mechanism, const sasl::Account& account) {
    sasl::Attempt attempt(mechanism, account);
    if (!attempt.canBegin()) {
        return LogOnState::NoWay;
    }
    constexpr std::size_t keywordSpacesAndLineEnd = 8;
    const std::string first =
        attempt.initialResponse(kMaximumCommandBytes - keywordSpacesAndLineEnd - mechanism.size());
    Event event = exchange.ask(authCommand(mechanism, first));
    for (int challenges = 0; std::holds_alternative<GoOn>(event); ++challenges) {
        if (challenges == sasl::Attempt::kMaximumChallenges) {
            throw RuntimeError(errors::SendingOutOfStep);
        }
        const Reply& challenge = std::get<GoOn>(event).reply;
        event = exchange.ask(authResponseCommand(attempt.respond(challenge.lines.back())));
    }
    const auto* const refused = std::get_if<Refused>(&event);
    const sasl::Verdict verdict = refused == nullptr ? attempt.whenAccepted() : attempt.whenRefused();
    if (verdict == sasl::Verdict::ServerNotProven) {
        throw RuntimeError(errors::LogOnRefused);
    }
    if (refused == nullptr) {
        return LogOnState::LoggedOn;
    }
    if (refused->reply.endsService()) {
        throw RuntimeError(errors::SendingLogOnRefusedForNow);
    }
    const bool cancelled = verdict == sasl::Verdict::NotUsable && refused->reply.code == 501;
    if (cancelled || isAboutMechanism(refused->reply)) {
        return LogOnState::NoWay;
    }
    return refused->reply.code < 500 ? LogOnState::RefusedForNow : LogOnState::Refused;
}

LogOnState logOnAs(Exchange& exchange, const sasl::Account& account, const Extensions& extensions,
                   Channel channel) {
    for (const std::string_view mechanism : usableMechanisms(extensions, channel)) {
        const LogOnState state = authenticate(exchange, mechanism, account);
        if (state != LogOnState::NoWay) {
            return state;
        }
    }
    return LogOnState::NoWay;
}
} // namespace

Channel channelOf(bool encrypted, bool toThisComputer) noexcept {
    if (encrypted) {
        return Channel::Encrypted;
    }
    return toThisComputer ? Channel::InClearToThisComputer : Channel::InClear;
}

std::vector<std::string_view> usableMechanisms(const Extensions& extensions, Channel channel) {
    std::vector<std::string_view> mechanisms = mechanismsFor(channel);
    std::erase_if(mechanisms, [&](std::string_view mechanism) { return !extensions.offers(mechanism); });
    return mechanisms;
}

LogOnState logOn(Exchange& exchange, const Account& account, const Extensions& extensions, Channel channel) {
    if (extensions.mechanisms.empty()) {
        return LogOnState::NotOffered;
    }
    if (account.user.empty()) {
        return LogOnState::NoWay;
    }
    const LogOnState state = logOnAs(exchange, {account.user, account.password}, extensions, channel);
    if (state != LogOnState::Refused || account.otherUser.empty() || account.otherUser == account.user) {
        return state;
    }
    LogOnState other = state;
    const int error = platform::errorNumberOf([&] {
        other = logOnAs(exchange, {account.otherUser, account.password}, extensions, channel);
    });
    if (error != 0) {
        // Some servers hang up after a refused log-on.
        throw RuntimeError(error == errors::SendingLost ? errors::SendingLogOnRefused : error);
    }
    return other == LogOnState::NoWay ? state : other;
}

} // namespace smtplib
