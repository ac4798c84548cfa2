#pragma once

#include "components/smtplib/log_on.h"
#include "components/smtplib/smtp_session.h"
#include "components/transport/connection.h"

namespace smtplib {

/** The run-time error for a connection that could not be opened or encrypted. */
int numberOf(transport::Outcome outcome) noexcept;

/** The run-time error for what the server has refused. */
int numberOf(const Refused& refused);

/**
 * The same for MAIL, RCPT and DATA, which a server may refuse because of the log-on before them, or because
 * the connection is not encrypted.
 */
int numberOf(const Refused& refused, LogOnState logOn, bool encrypted);

/** The run-time error for a connection that was lost between the log-on and the first command behind it. */
int numberOfLoss(LogOnState logOn) noexcept;

/** The run-time error for an attempt that broke off, before or after the whole message had left. */
int numberOf(FailureKind kind, bool mayHaveBeenSent) noexcept;

} // namespace smtplib
