#pragma once

#include "components/poplib/pop.h"
#include "doctor/servers.h"
#include "message/mail_mode.h"

namespace doctor {

/**
 * Looks at every message of the open mailbox, with LIST and TOP alone, and adds to the report what will stop
 * or puzzle a member in that way of reading. Raises nothing.
 */
void surveyMailbox(poplib::POP& pop, MailMode mode, const Surveys& surveys);

} // namespace doctor
