#pragma once

#include "components/smtplib/log_on.h"
#include "doctor/servers.h"

namespace doctor {

/**
 * Looks at the SMTP server of this name as the program will: its addresses and a session. With an account
 * that has a user, it logs on where the program would. Offers no message. Adds to the report what was seen.
 */
void surveySmtp(const QString& name, const smtplib::Account& account, const Surveys& surveys);

} // namespace doctor
