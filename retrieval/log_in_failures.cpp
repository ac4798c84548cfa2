#include "retrieval/log_in_failures.h"

#include "platform/runtime_error.h"

#include <array>

namespace errors = platform::errors;

namespace {

constexpr std::array<Failure<AfterFailedLogIn>, 8> kLogInFailures = {{
    // No box: the user has given up the log-on.
    {errors::GivenUp, {"", ""}, AfterFailedLogIn::TypePasswordAgain},
    {errors::MailServerBusy,
     {"Cannot Re-Enter Mail Server, Please Try Again %1", " Mail Error"},
     AfterFailedLogIn::TryAgain},
    {errors::LogOnRefused,
     {"Password Or User Name Wrong, Please Try Again %1", " Mail Error"},
     AfterFailedLogIn::TypePasswordAgain},
    {errors::MailServerTrouble,
     {"There was trouble connecting with the Mail Server.", " E-Mail"},
     AfterFailedLogIn::EndProgram},
    {errors::HostNotFound, {"Mail Server not found.", " E-Mail"}, AfterFailedLogIn::EndProgram},
    {errors::ConnectionRefused, {"Connection refused by host.", " E-Mail"}, AfterFailedLogIn::EndProgram},
    {errors::NetworkUnreachable, {"Network is unreachable.", " E-mail"}, AfterFailedLogIn::EndProgram},
    {kAnyOtherError, {"Error %1 Please start program again ", " E-Mail"}, AfterFailedLogIn::EndProgram},
}};
} // namespace

const Failure<AfterFailedLogIn>& logInFailure(int error) {
    return failureOf(kLogInFailures, error);
}

QString boxOfFailedLogIn(int error) {
    return textOf(logInFailure(error).box, error);
}
