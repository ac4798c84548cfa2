#pragma once

#include "doctor/pop3_survey.h"
#include "doctor/servers.h"

#include <QString>

namespace doctor {

/**
 * Looks at the directory of this name as Find Address will: its addresses, a session, the search base, and
 * whether it can be searched. With a member it logs on where the program would. Adds to the report what was
 * seen.
 */
void surveyDirectory(const QString& name, const QString& base, const Member* member, const Surveys& surveys);

} // namespace doctor
