#include "mailserver/smtp_log_on.h"

#include "mailserver/mail_text.h"
#include "mailserver/sasl_mechanisms.h"

#include <algorithm>

namespace mailserver {

namespace {

bool isIn(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

/** True when this mechanism may be used in the present state of the connection. */
bool SmtpLogOn::takes(std::string_view mechanism) const {
    return features_.passwordInClear || isEncrypted_ || hidesPassword(mechanism);
}

std::vector<std::string> SmtpLogOn::capabilities() const {
    std::string names;
    for (const std::string& mechanism : features_.mechanisms) {
        if (takes(mechanism)) {
            names += (names.empty() ? "" : " ") + mechanism;
        }
    }
    if (names.empty()) {
        return {};
    }
    std::vector<std::string> lines{"AUTH " + names};
    if (features_.offersInOldForm) {
        lines.push_back("AUTH=" + names);
    }
    return lines;
}

std::string SmtpLogOn::begin(std::string_view argument) {
    if (isAdmitted_) {
        return "503 5.5.1 you have logged on already\r\n";
    }
    const auto [mechanism, response] = splitCommand(argument);
    auto made =
        isIn(features_.mechanisms, mechanism) ? makeMechanism(mechanism, accounts_, features_.sasl) : nullptr;
    if (!made) {
        return "504 5.5.4 that mechanism is not known\r\n";
    }
    if (isIn(features_.tooWeak, mechanism)) {
        return "534 5.7.9 that mechanism is too weak\r\n";
    }
    if (!takes(mechanism)) {
        return "538 5.7.11 that mechanism needs encryption\r\n";
    }
    sasl_.emplace(std::move(made));
    return answerOf(sasl_->begin(response));
}

std::string SmtpLogOn::answerOf(const SaslDialogue::Answer& answer) {
    if (answer.outcome == SaslDialogue::Outcome::Challenge) {
        return "334 " + answer.challenge + "\r\n";
    }
    sasl_.reset();
    switch (answer.outcome) {
    case SaslDialogue::Outcome::Accepted:
        isAdmitted_ = true;
        return "235 2.7.0 welcome\r\n";
    case SaslDialogue::Outcome::Refused:
        return "535 5.7.8 wrong name or password\r\n";
    case SaslDialogue::Outcome::Cancelled:
        return "501 5.7.0 cancelled\r\n";
    default:
        return "501 5.5.2 that is no response of this mechanism\r\n";
    }
}

} // namespace mailserver
