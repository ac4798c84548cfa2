#pragma once

#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace platform {

/** The numbers of run-time errors, as users see them and the handlers' tables list them. */
namespace errors {
inline constexpr int None = 0;
inline constexpr int InvalidProcedureCall = 5;
inline constexpr int Overflow = 6;
inline constexpr int OutOfMemory = 7;
inline constexpr int SubscriptOutOfRange = 9;
inline constexpr int TypeMismatch = 13;
inline constexpr int BadFileName = 52;
inline constexpr int FileNotFound = 53;
inline constexpr int DeviceInputOutput = 57;
inline constexpr int DiskFull = 61;
inline constexpr int InputPastEndOfFile = 62;
inline constexpr int DeviceUnavailable = 68;
inline constexpr int PathFileAccess = 75;
/** A picture file that holds no picture. */
inline constexpr int InvalidPicture = 481;
/** There is no default printer, or it takes no document. */
inline constexpr int PrinterError = 482;

/**
 * A request to a mail server while another runs, a second log-on, or a server that says to try again later.
 */
inline constexpr int MailServerBusy = 20102;
/** The mail server refused the user name or the password. */
inline constexpr int LogOnRefused = 20172;
/** The mail server refuses every log-on of this user for good (the response code [SYS/PERM]). */
inline constexpr int LogOnImpossible = 20173;
/** The mail server is silent, the connection is lost, or a reply is one that no mail server gives. */
inline constexpr int MailServerTrouble = 20302;
/** The number of the message to be deleted names another message by now, or none that was listed. */
inline constexpr int AnotherMessage = 20312;
// Encryption, 20321 to 20325: the same numbers for the POP3 and the SMTP server.

/** Encryption is demanded, by this program or by the mail server, and not offered, or refused. */
inline constexpr int EncryptionNotOffered = 20321;
/** Nobody whom this computer trusts has issued the mail server's certificate. */
inline constexpr int CertificateNotTrusted = 20322;
/** The mail server's certificate is for another name. */
inline constexpr int CertificateForOtherName = 20323;
/** The mail server's certificate has expired, or is not valid yet. */
inline constexpr int CertificateNotValidNow = 20324;
/** The encryption could not be begun for another reason, or bytes in clear came in between. */
inline constexpr int EncryptionFailed = 20325;
/** The mail server refused to delete a message. */
inline constexpr int DeletionRefused = 20332;
/** The mail server refused to give a message that was to be opened. */
inline constexpr int MessageNotGiven = 20342;
/** The user gave up waiting for the mail server. */
inline constexpr int GivenUp = 20352;

// Sending mail. 20401 to 20405: the message itself cannot be sent. 2041x and 2042x: the server refuses, for
// good and for now. 20431 to 20434: the attempt ended before the message was complete. After all of these
// nothing was sent. Only after 20442 to 20444 may the message have been sent all the same.
inline constexpr int BadAddress = 20401;
inline constexpr int NoRecipient = 20402;
inline constexpr int FieldHoldsLineEnd = 20403;
inline constexpr int BadHeaderLine = 20404;
/** An address has characters beyond ASCII, and the server does not take such addresses (no SMTPUTF8). */
inline constexpr int AddressBeyondAscii = 20405;
inline constexpr int GreetingRefused = 20411;
inline constexpr int HelloRefused = 20412;
inline constexpr int SenderRefused = 20413;
inline constexpr int RecipientRefused = 20414;
inline constexpr int DataRefused = 20415;
inline constexpr int MessageRefused = 20416;
/** The server refused the name or the password, and then the sender or a recipient. */
inline constexpr int SendingLogOnRefused = 20417;
/** The server demands a log-on and offers none that may be used. */
inline constexpr int SendingLogOnImpossible = 20418;
inline constexpr int GreetingRefusedForNow = 20421;
inline constexpr int HelloRefusedForNow = 20422;
inline constexpr int SenderRefusedForNow = 20423;
inline constexpr int RecipientRefusedForNow = 20424;
inline constexpr int DataRefusedForNow = 20425;
inline constexpr int MessageRefusedForNow = 20426;
inline constexpr int SendingLogOnRefusedForNow = 20427;
inline constexpr int MessageTooLarge = 20431;
inline constexpr int SendingLost = 20432;
inline constexpr int SendingTimedOut = 20433;
inline constexpr int SendingOutOfStep = 20434;
inline constexpr int ConfirmationLost = 20442;
inline constexpr int ConfirmationTimedOut = 20443;
inline constexpr int ConfirmationUnclear = 20444;

/** An attachment's text that is not base64, or not all of it. */
inline constexpr int BadEncodedText = 20502;
/** An attachment that would take the place of a file of the program's own. */
inline constexpr int OwnFile = 20503;

inline constexpr int NetworkUnreachable = 25052;
inline constexpr int ConnectionRefused = 25062;
inline constexpr int HostNotFound = 26002;
} // namespace errors

/** An error with its number. The handlers' tables give the message for each number. */
class RuntimeError : public std::exception {
  public:
    explicit RuntimeError(int number) : number_(number), text_("run-time error " + std::to_string(number)) {}

    int number() const noexcept { return number_; }

    const char* what() const noexcept override { return text_.c_str(); }

  private:
    int number_;
    std::string text_;
};

/**
 * Runs the action and returns the number of the error that it raised, 0 when it raised none. Memory that
 * cannot be had is error 7, as everywhere in the program.
 */
template <class Action>
[[nodiscard]] int errorNumberOf(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const RuntimeError& error) {
        return error.number();
    } catch (const std::bad_alloc&) {
        return errors::OutOfMemory;
    } catch (const std::length_error&) {
        return errors::OutOfMemory;
    }
    return errors::None;
}

/** Runs the action; false when memory could not be had for it. Any other error passes through. */
template <class Action>
[[nodiscard]] bool fitsInMemory(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
    return true;
}

} // namespace platform
