#pragma once

#include "components/smtplib/smtp_session.h"
#include "components/transport/connection.h"

namespace smtplib {

/** The run-time error for a connection that could not be opened. */
int numberOf(transport::Outcome outcome) noexcept;

/** The run-time error for what the server has refused. */
int numberOf(const Refused& refused) noexcept;

/** The run-time error for an attempt that broke off, before or after the whole message had left. */
int numberOf(FailureKind kind, bool mayHaveBeenSent) noexcept;

} // namespace smtplib
