#pragma once

#include "retrieval/failures.h"

#include <QString>

enum class AfterFailedLogIn { TryAgain, TypePasswordAgain, EndProgram };

/** How a log-in that has failed with this error is reported, and what happens next. */
const Failure<AfterFailedLogIn>& logInFailure(int error);

/** The text of the box that reports it; empty where there is none. */
QString boxOfFailedLogIn(int error);
