#include "components/smtplib/error_numbers.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <string_view>

namespace smtplib {

namespace errors = platform::errors;

namespace {
/** Whether the reply has an enhanced status code that begins so (RFC 3463, RFC 2034 section 4). */
bool hasStatus(const Reply& reply, std::string_view status) {
    return std::any_of(reply.lines.begin(), reply.lines.end(),
                       [status](std::string_view line) { return line.starts_with(status); });
}

/** 552 is the code for a message that is too large (RFC 1870 section 6); some servers say 534. */
bool isTooLarge(const Reply& reply) {
    return reply.code == 552 || reply.code == 534 || hasStatus(reply, "5.3.4");
}

/** "Authentication required" (RFC 4954 section 6), and what servers say in its place. */
bool demandsLogOn(const Reply& reply) {
    return reply.code == 530 || ((reply.code == 550 || reply.code == 554) && hasStatus(reply, "5.7."));
}

/** "Must issue a STARTTLS command first" (RFC 3207 section 4). */
bool demandsEncryption(const Reply& reply) {
    return reply.code == 530 && std::any_of(reply.lines.begin(), reply.lines.end(), [](const auto& line) {
               return platform::upperCase(line).find("STARTTLS") != std::string::npos;
           });
}
} // namespace

int numberOf(transport::Outcome outcome) noexcept {
    return transport::openingErrorNumber(outcome, errors::SendingTimedOut, errors::SendingLost);
}

int numberOf(const Refused& refused) {
    const bool forNow = refused.reply.code < 500;
    const bool tooLarge = isTooLarge(refused.reply);
    switch (refused.kind) {
    case CommandKind::Greeting:
        return forNow ? errors::GreetingRefusedForNow : errors::GreetingRefused;
    case CommandKind::Ehlo:
    case CommandKind::Helo:
        return forNow ? errors::HelloRefusedForNow : errors::HelloRefused;
    case CommandKind::StartTls:
        return errors::EncryptionNotOffered;
    case CommandKind::Auth:
    case CommandKind::AuthResponse:
        return forNow ? errors::SendingLogOnRefusedForNow : errors::SendingLogOnRefused;
    case CommandKind::Mail:
        return tooLarge ? errors::MessageTooLarge
               : forNow ? errors::SenderRefusedForNow
                        : errors::SenderRefused;
    case CommandKind::Rcpt:
        return forNow ? errors::RecipientRefusedForNow : errors::RecipientRefused;
    case CommandKind::Data:
        return forNow ? errors::DataRefusedForNow : errors::DataRefused;
    case CommandKind::EndOfMessage:
        return tooLarge ? errors::MessageTooLarge
               : forNow ? errors::MessageRefusedForNow
                        : errors::MessageRefused;
    case CommandKind::Quit:
        break;
    }
    return errors::SendingOutOfStep;
}

int numberOf(const Refused& refused, LogOnState logOn, bool encrypted) {
    const Reply& reply = refused.reply;
    if (isTooLarge(reply) || logOn == LogOnState::LoggedOn) {
        return numberOf(refused);
    }
    if (!encrypted && demandsEncryption(reply)) {
        return errors::EncryptionNotOffered;
    }
    const bool wasRefused = logOn == LogOnState::Refused || logOn == LogOnState::RefusedForNow;
    if (wasRefused && refused.kind != CommandKind::Data) {
        const bool forNow = reply.code < 500 || logOn == LogOnState::RefusedForNow;
        return forNow ? errors::SendingLogOnRefusedForNow : errors::SendingLogOnRefused;
    }
    return demandsLogOn(reply) && !wasRefused ? errors::SendingLogOnImpossible : numberOf(refused);
}

int numberOfLoss(LogOnState logOn) noexcept {
    switch (logOn) {
    // Some servers hang up on those whom they have refused.
    case LogOnState::Refused:
        return errors::SendingLogOnRefused;
    case LogOnState::RefusedForNow:
        return errors::SendingLogOnRefusedForNow;
    default:
        return errors::SendingLost;
    }
}

int numberOf(FailureKind kind, bool mayHaveBeenSent) noexcept {
    switch (kind) {
    case FailureKind::Lost:
        return mayHaveBeenSent ? errors::ConfirmationLost : errors::SendingLost;
    case FailureKind::TimedOut:
        return mayHaveBeenSent ? errors::ConfirmationTimedOut : errors::SendingTimedOut;
    case FailureKind::ConfirmedTooEarly:
        // The server may deliver the part of the message that it has.
        return errors::ConfirmationUnclear;
    case FailureKind::OutOfStep:
        return mayHaveBeenSent ? errors::ConfirmationUnclear : errors::SendingOutOfStep;
    }
    return errors::SendingOutOfStep;
}

} // namespace smtplib
