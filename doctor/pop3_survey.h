#pragma once

#include "components/poplib/pop.h"
#include "doctor/servers.h"

#include <functional>
#include <string>

namespace doctor {

/** Who logs on, in UTF-8. */
struct Member {
    std::string user;
    std::string password;
};

/** Looks through the open mailbox; it is closed afterwards. */
using LookThrough = std::function<void(poplib::POP& pop, ServerSeen& server)>;

/**
 * Looks at the POP3 server of this name as the program will: its addresses, a session up to the log-on, and
 * with a member a second one with a log-on, in which `lookThrough` is called. Adds to the report what was
 * seen.
 */
void surveyPop3(const QString& name, const Member* member, const LookThrough& lookThrough,
                const Surveys& surveys);

} // namespace doctor
