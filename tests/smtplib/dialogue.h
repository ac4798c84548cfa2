#pragma once

#include "components/smtplib/error_numbers.h"
#include "components/smtplib/smtp_session.h"
#include "tests/support/described_event.h"
#include "tests/support/line_dialogue.h"

#include <initializer_list>
#include <string_view>
#include <variant>
#include <vector>

namespace support {

inline int numberOfSmtpFailure(const smtplib::Event* event, const smtplib::SmtpSession& session) {
    if (event == nullptr) {
        return smtplib::numberOf(smtplib::FailureKind::Lost, session.mayHaveBeenSent());
    }
    const auto* const failed = std::get_if<smtplib::Failed>(event);
    return failed == nullptr ? 0 : smtplib::numberOf(failed->kind, session.mayHaveBeenSent());
}

class SmtpDialogue : public LineDialogue<smtplib::SmtpSession> {
  public:
    SmtpDialogue(std::initializer_list<std::string_view> lines) : SmtpDialogue(std::vector(lines)) {}

    explicit SmtpDialogue(const std::vector<std::string_view>& lines)
        : LineDialogue(lines, described, numberOfSmtpFailure) {}
};

} // namespace support
