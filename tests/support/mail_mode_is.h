#pragma once

#include "message/mail_mode.h"

namespace support {

/** Lets the program work in one way of mail for as long as it lives. */
class MailModeIs {
  public:
    explicit MailModeIs(MailMode mode) : before_(mailMode()) { useMailMode(mode); }

    ~MailModeIs() { useMailMode(before_); }

    MailModeIs(const MailModeIs&) = delete;
    MailModeIs& operator=(const MailModeIs&) = delete;

  private:
    MailMode before_;
};

} // namespace support
