#pragma once

#include "message/mail_mode.h"

namespace support {

/** The standard way of reading and writing mail for as long as this lives. */
class StandardMode {
  public:
    StandardMode() { useMailMode(MailMode::Standard); }

    ~StandardMode() { useMailMode(MailMode::House); }

    StandardMode(const StandardMode&) = delete;
    StandardMode& operator=(const StandardMode&) = delete;
};

} // namespace support
