#pragma once

#include "doctor/message_seen.h"
#include "doctor/report.h"
#include "message/mail_mode.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace doctor {

/** What will stop or puzzle a member who meets this message in that way of reading. */
std::vector<Finding> findingsOf(const MessageSeen& message, MailMode mode);

/** The same for a message of which only the size is known. */
std::vector<Finding> findingsOfSize(int number, std::optional<std::int32_t> size);

} // namespace doctor
