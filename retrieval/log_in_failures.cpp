#include "retrieval/log_in_failures.h"

#include "platform/runtime_error.h"

#include <array>

namespace errors = platform::errors;

namespace {
using Then = AfterFailedLogIn;

constexpr std::array<Failure<Then>, 8> kFailures = {{
    // No box: the user has given up the log-on.
    {errors::GivenUp, {"", ""}, Then::TypePasswordAgain},
    {errors::MailServerBusy,
     {"Cannot Re-Enter Mail Server, Please Try Again %1", " Mail Error"},
     Then::TryAgain},
    {errors::LogOnRefused,
     {"Password Or User Name Wrong, Please Try Again %1", " Mail Error"},
     Then::TypePasswordAgain},
    {errors::MailServerTrouble,
     {"There was trouble connecting with the Mail Server.", " E-Mail"},
     Then::EndProgram},
    {errors::HostNotFound, {"Mail Server not found.", " E-Mail"}, Then::EndProgram},
    {errors::ConnectionRefused, {"Connection refused by host.", " E-Mail"}, Then::EndProgram},
    {errors::NetworkUnreachable, {"Network is unreachable.", " E-mail"}, Then::EndProgram},
    {kAnyOtherError, {"Error %1 Please start program again ", " E-Mail"}, Then::EndProgram},
}};
} // namespace

const Failure<AfterFailedLogIn>& logInFailure(int error) {
    return failureOf(kFailures, error);
}

QString boxOfFailedLogIn(int error) {
    return textOf(logInFailure(error).box, error);
}
