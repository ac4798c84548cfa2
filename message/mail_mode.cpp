#include "message/mail_mode.h"

namespace {
MailMode& modeInUse() noexcept {
    static MailMode mode = MailMode::House;
    return mode;
}
} // namespace

MailMode mailMode() noexcept {
    return modeInUse();
}

void useMailMode(MailMode mode) noexcept {
    modeInUse() = mode;
}
