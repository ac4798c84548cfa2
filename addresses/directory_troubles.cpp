#include "addresses/directory_troubles.h"

#include "platform/runtime_error.h"

namespace addresses {

namespace errors = platform::errors;
using Kind = DirectoryEnd::Kind;

namespace {
std::string withNumber(const std::string& words, int number) {
    return words + " Error# " + std::to_string(number);
}

std::string withResult(const std::string& words, int code) {
    return words + " (LDAP result " + std::to_string(code) + ")";
}

const char* wordsForError(int number) {
    switch (number) {
    case errors::FileNotFound:
        return "The program's file for directories is missing. Tell the administrator.";
    case errors::HostNotFound:
        return "The directory server was not found. Tell the administrator.";
    case errors::ConnectionRefused:
        return "The directory server refused the connection. Try again later.";
    case errors::NetworkUnreachable:
        return "The network cannot be reached. Check the computer's connection.";
    case errors::EncryptionNotOffered:
        return "Encryption is demanded, and the directory server does not offer it. Tell the administrator.";
    case errors::CertificateNotTrusted:
        return "The directory server's certificate is from nobody whom this computer trusts. Tell the "
               "administrator.";
    case errors::CertificateForOtherName:
        return "The directory server's certificate is for another name. Tell the administrator.";
    case errors::CertificateNotValidNow:
        return "The directory server's certificate is not valid today. Check this computer's date; if it is "
               "right, tell the administrator.";
    case errors::EncryptionFailed:
        return "The encryption with the directory server could not be begun. Tell the administrator.";
    default:
        return "The connection to the directory server failed. Try again later.";
    }
}

const char* wordsForResult(int code) {
    constexpr int operationsError = 1;
    constexpr int referral = 10;
    constexpr int noSuchObject = 32;
    constexpr int invalidNameSyntax = 34;
    constexpr int busy = 51;
    constexpr int unavailable = 52;
    switch (code) {
    case results::TimeLimitExceeded:
    case results::SizeLimitExceeded:
    case results::AdminLimitExceeded:
        return "The directory server broke the search off. Type more of the name.";
    case operationsError:
        return "The directory server could not search, perhaps because it demands a log-on. Tell the "
               "administrator.";
    case referral:
        return "The directory server names another server, which is not asked. Tell the administrator.";
    case noSuchObject:
    case invalidNameSyntax:
        return "The directory does not know the search base of the settings. Tell the administrator.";
    case busy:
    case unavailable:
        return "The directory server is busy. Try again later.";
    default:
        return demandsLogOn(code) ? "The directory does not let you search. Tell the administrator."
                                  : "The directory server could not search. Tell the administrator.";
    }
}
} // namespace

bool demandsLogOn(int code) noexcept {
    constexpr int operationsError = 1;
    constexpr int strongerAuthRequired = 8;
    constexpr int inappropriateAuthentication = 48;
    constexpr int insufficientAccessRights = 50;
    constexpr int unwillingToPerform = 53;
    return code == operationsError || code == strongerAuthRequired || code == inappropriateAuthentication ||
           code == insufficientAccessRights || code == unwillingToPerform;
}

bool isLimit(int code) noexcept {
    return code == results::TimeLimitExceeded || code == results::SizeLimitExceeded ||
           code == results::AdminLimitExceeded;
}

int errorNumberOf(const DirectoryEnd& end) noexcept {
    switch (end.kind) {
    case Kind::Answered:
        return errors::None;
    case Kind::NoLibrary:
        return errors::FileNotFound;
    case Kind::NotEncrypted:
        return errors::EncryptionNotOffered;
    case Kind::NotOpened:
        return transport::openingErrorNumber(end.outcome, errors::MailServerTrouble,
                                             errors::MailServerTrouble);
    case Kind::Broken:
    case Kind::TimedOut:
        break;
    }
    return errors::MailServerTrouble;
}

std::string troubleOf(const DirectoryEnd& end) {
    if (end.kind == Kind::Answered) {
        return end.code == results::Success ? std::string() : withResult(wordsForResult(end.code), end.code);
    }
    const int number = errorNumberOf(end);
    if (end.kind == Kind::TimedOut) {
        return withNumber("The directory server did not answer in time. Try again later.", number);
    }
    return withNumber(wordsForError(number), number);
}

std::string troubleOfLogOn(const DirectoryEnd& end) {
    if (end.kind != Kind::Answered) {
        return troubleOf(end);
    }
    return withResult(end.code == results::InvalidCredentials
                          ? "The directory refused your name or password. Tell the administrator."
                          : "The directory does not let you log on. Tell the administrator.",
                      end.code);
}

std::string troubleOfName() {
    return withNumber("The name of the directory server in the settings is none. Tell the administrator.",
                      errors::HostNotFound);
}

} // namespace addresses
