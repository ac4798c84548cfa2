#include "components/smtplib/error_numbers.h"

#include "platform/runtime_error.h"

namespace smtplib {

namespace errors = platform::errors;

int numberOf(transport::Outcome outcome) noexcept {
    return transport::openingErrorNumber(outcome, errors::SendingTimedOut, errors::SendingLost);
}

int numberOf(const Refused& refused) noexcept {
    const bool forNow = refused.reply.code < 500;
    // The reply code for a message that is too large (RFC 1870 section 6).
    const bool tooLarge = refused.reply.code == 552;
    switch (refused.kind) {
    case CommandKind::Greeting:
        return forNow ? errors::GreetingRefusedForNow : errors::GreetingRefused;
    case CommandKind::Ehlo:
    case CommandKind::Helo:
        return forNow ? errors::HelloRefusedForNow : errors::HelloRefused;
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
