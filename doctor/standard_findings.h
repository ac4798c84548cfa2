#pragma once

#include "doctor/message_seen.h"
#include "doctor/report.h"

#include <vector>

namespace doctor {

/**
 * What will puzzle a member who meets this message in the standard way of reading. Nothing where the library
 * of that way cannot be loaded, which is a finding of its own.
 */
std::vector<Finding> standardFindingsOf(const MessageSeen& message);

} // namespace doctor
