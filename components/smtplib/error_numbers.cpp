#include "components/smtplib/error_numbers.h"

#include "platform/runtime_error.h"

namespace SMTPLib {

namespace errors = platform::errors;

int numberOf(transport::Outcome outcome) noexcept {
    return transport::openingErrorNumber(outcome, errors::SendingTimedOut, errors::SendingLost);
}

int numberOf(const Refused& refused) noexcept {
    const bool forNow = refused.code < 500;
    // RFC 1870 section 6: what the server says when a message is larger than it takes.
    const bool tooLarge = refused.code == 552;
    switch (refused.stage) {
    case Stage::Greeting:
        return forNow ? errors::GreetingRefusedForNow : errors::GreetingRefused;
    case Stage::Hello:
        return forNow ? errors::HelloRefusedForNow : errors::HelloRefused;
    case Stage::Sender:
        return tooLarge ? errors::MessageTooLarge
               : forNow ? errors::SenderRefusedForNow
                        : errors::SenderRefused;
    case Stage::Recipient:
        return forNow ? errors::RecipientRefusedForNow : errors::RecipientRefused;
    case Stage::Data:
        return forNow ? errors::DataRefusedForNow : errors::DataRefused;
    case Stage::Message:
        return tooLarge ? errors::MessageTooLarge
               : forNow ? errors::MessageRefusedForNow
                        : errors::MessageRefused;
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
        // The server may pass on what it has.
        return errors::ConfirmationUnclear;
    case FailureKind::OutOfStep:
        return mayHaveBeenSent ? errors::ConfirmationUnclear : errors::SendingOutOfStep;
    }
    return errors::SendingOutOfStep;
}

} // namespace SMTPLib
