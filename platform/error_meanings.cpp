#include "platform/error_meanings.h"

#include "platform/runtime_error.h"

namespace platform {

namespace {
/** Returns what an error of sending means; empty for any other number. */
std::string meaningOfSendingError(int errorNumber) {
    switch (errorNumber) {
    case errors::BadAddress:
        return "An e-mail address is not complete or not correct. The message was not sent.";
    case errors::NoRecipient:
        return "The message has no recipient. It was not sent.";
    case errors::FieldHoldsLineEnd:
        return "An address or the subject holds a line end. The message was not sent.";
    case errors::BadHeaderLine:
        return "A header line of the message is not correct. The message was not sent.";
    case errors::AddressBeyondAscii:
        return "The mail server takes only addresses of plain letters (ASCII). The message was not sent.";
    case errors::GreetingRefused:
        return "The mail server offers no service. The message was not sent.";
    case errors::HelloRefused:
        return "The mail server does not serve this computer. The message was not sent.";
    case errors::SenderRefused:
        return "The mail server refused the sender's address. The message was not sent.";
    case errors::RecipientRefused:
        return "The mail server refused a recipient. The message was sent to nobody; check the addresses.";
    case errors::DataRefused:
        return "The mail server does not take a message for these recipients. It was not sent.";
    case errors::MessageRefused:
        return "The mail server refused the message. It was not sent.";
    case errors::SendingLogOnRefused:
        return "The mail server refused your name or password, and then the message. It was not sent.";
    case errors::SendingLogOnImpossible:
        return "The mail server demands a log-on for sending and offers none that may be used. Tell the "
               "administrator.";
    case errors::SendingLogOnRefusedForNow:
        return "The mail server does not let you log on for sending now. The message was not sent; try again "
               "later.";
    case errors::GreetingRefusedForNow:
        return "The mail server offers no service now. The message was not sent; try again later.";
    case errors::HelloRefusedForNow:
        return "The mail server does not serve this computer now. The message was not sent; try again later.";
    case errors::SenderRefusedForNow:
        return "The mail server does not take mail from the sender now. It was not sent; try again later.";
    case errors::RecipientRefusedForNow:
        return "The mail server does not take mail for a recipient now. It was sent to nobody; try again "
               "later.";
    case errors::DataRefusedForNow:
        return "The mail server cannot take a message now. It was not sent; try again later.";
    case errors::MessageRefusedForNow:
        return "The mail server did not take the message now. It was not sent; try again later.";
    case errors::MessageTooLarge:
        return "The message is larger than the mail server allows. It was not sent.";
    case errors::SendingLost:
        return "The connection broke before the message was complete. It was not sent; try again.";
    case errors::SendingTimedOut:
        return "The mail server was silent for too long. The message was not sent; try again later.";
    case errors::SendingOutOfStep:
        return "The mail server gave an answer that makes no sense. The message was not sent.";
    case errors::ConfirmationLost:
        return "The connection broke before the mail server confirmed. The message may have been sent.";
    case errors::ConfirmationTimedOut:
        return "The mail server did not confirm in time. The message may have been sent.";
    case errors::ConfirmationUnclear:
        return "The mail server's last answer makes no sense. The message may have been sent.";
    default:
        return {};
    }
}
} // namespace

std::string meaningOf(int errorNumber) {
    switch (errorNumber) {
    case errors::InvalidProcedureCall:
        return "A text did not have the form that was expected.";
    case errors::Overflow:
        return "A number is too large.";
    case errors::OutOfMemory:
        return "There is not enough memory, or something is far too large.";
    case errors::SubscriptOutOfRange:
        return "A message number lies outside the list.";
    case errors::TypeMismatch:
        return "A text that should be a number is not one.";
    case errors::BadFileName:
        return "A file name holds a character that it must not hold. Rename the file and try again.";
    case errors::FileNotFound:
        return "A file was not found.";
    case errors::DeviceInputOutput:
        return "A file could not be read or written to its end. Check the disk and try again.";
    case errors::DiskFull:
        return "The disk is full. Make room on it and try again.";
    case errors::InputPastEndOfFile:
        return "A file is shorter than it should be.";
    case errors::DeviceUnavailable:
        return "The drive is not ready. Insert a disk and try again.";
    case errors::PathFileAccess:
        return "A file or folder cannot be opened. Check its name and your rights to it.";
    case errors::InvalidPicture:
        return "The picture file holds no picture. Put another one in its place.";
    case errors::PrinterError:
        return "The message cannot be printed. Check that a default printer is set up and ready, then try "
               "again.";
    case errors::MailServerBusy:
        return "The mail server is busy with another request. Try again in a moment.";
    case errors::LogOnRefused:
        return "The mail server refused the user name or the password.";
    case errors::LogOnImpossible:
        return "The mail server says that you cannot log on. Tell the administrator.";
    case errors::EncryptionNotOffered:
        return "Encryption is demanded, and the mail server does not offer it. Tell the administrator.";
    case errors::CertificateNotTrusted:
        return "The mail server's certificate is from nobody whom this computer trusts. Tell the "
               "administrator.";
    case errors::CertificateForOtherName:
        return "The mail server's certificate is for another name. Tell the administrator.";
    case errors::CertificateNotValidNow:
        return "The mail server's certificate is not valid today. Check this computer's date; if it is "
               "right, "
               "tell the administrator.";
    case errors::EncryptionFailed:
        return "The encryption with the mail server could not be begun. Tell the administrator.";
    case errors::MailServerTrouble:
        return "The connection to the mail server failed. Try again later.";
    case errors::AnotherMessage:
        return "The mailbox has changed since it was listed. Nothing was deleted; start the program again.";
    case errors::GivenUp:
        return "The request was given up before the mail server had answered.";
    case errors::DeletionRefused:
        return "The mail server refused to delete the message. It is still there.";
    case errors::MessageNotGiven:
        return "The mail server does not give the message; another program may have deleted it.";
    case errors::NetworkUnreachable:
        return "The network cannot be reached. Check the computer's connection.";
    case errors::ConnectionRefused:
        return "The mail server refused the connection. Check its name and port.";
    case errors::HostNotFound:
        return "The mail server was not found. Check its name.";
    case errors::BadEncodedText:
        return "The attachment's text is not base64, or a part of it was lost on the way. It is not saved.";
    case errors::OwnFile:
        return "The attachment would take the place of a file of the program's own. It is not saved.";
    default:
        const std::string sending = meaningOfSendingError(errorNumber);
        return sending.empty() ? "The program met a condition that it does not know." : sending;
    }
}

} // namespace platform
