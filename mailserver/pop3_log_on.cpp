#include "mailserver/pop3_log_on.h"

#include "mailserver/digests.h"
#include "mailserver/mail_text.h"
#include "mailserver/sasl_mechanisms.h"

#include <algorithm>

namespace mailserver {

namespace {
constexpr std::string_view kNotInClear = "-ERR [AUTH] Plaintext authentication disallowed\r\n";
} // namespace

/** True when a password may come as it is. */
bool Pop3LogOn::showsPasswords() const {
    return features_.passwordInClear || isEncrypted_;
}

void Pop3LogOn::encrypted() {
    isEncrypted_ = true;
    user_.clear();
}

std::string Pop3LogOn::userCapability() const {
    return features_.user && showsPasswords() ? "USER\r\n" : "";
}

std::string Pop3LogOn::saslCapability() const {
    std::string mechanisms;
    for (const std::string& mechanism : features_.mechanisms) {
        if (showsPasswords() || hidesPassword(mechanism)) {
            mechanisms += " " + mechanism;
        }
    }
    return mechanisms.empty() ? "" : "SASL" + mechanisms + "\r\n";
}

std::optional<std::string> Pop3LogOn::answer(const std::string& command, std::string_view argument) {
    if (command == "USER" && features_.user) {
        return userName(argument);
    }
    if (command == "PASS" && features_.user) {
        return password(argument);
    }
    if (command == "APOP" && !features_.timestamp.empty()) {
        return digest(argument);
    }
    if (command == "AUTH" && !features_.mechanisms.empty()) {
        return beginDialogue(argument);
    }
    return std::nullopt;
}

std::string Pop3LogOn::userName(std::string_view argument) {
    if (!showsPasswords()) {
        return std::string(kNotInClear);
    }
    user_ = argument;
    return user_.empty() ? "-ERR a user name is needed\r\n" : "+OK the password, please\r\n";
}

std::string Pop3LogOn::password(std::string_view argument) {
    if (!showsPasswords()) {
        return std::string(kNotInClear);
    }
    const std::string user = std::exchange(user_, {});
    if (user.empty()) {
        return "-ERR the user name comes first\r\n";
    }
    return admit(accounts_.admits(user, argument));
}

/** APOP (RFC 1939 section 7). */
std::string Pop3LogOn::digest(std::string_view argument) {
    const std::size_t space = argument.rfind(' ');
    if (space == std::string_view::npos) {
        return "-ERR a user name and a digest are needed\r\n";
    }
    const auto password =
        accounts_.passwordOf ? accounts_.passwordOf(argument.substr(0, space)) : std::nullopt;
    return admit(password && argument.substr(space + 1) ==
                                 lowerHex(digestOf(Digest::Md5, features_.timestamp + *password)));
}

std::string Pop3LogOn::beginDialogue(std::string_view argument) {
    const auto [mechanism, response] = splitCommand(argument);
    const bool isOffered = std::find(features_.mechanisms.begin(), features_.mechanisms.end(), mechanism) !=
                           features_.mechanisms.end();
    auto made = isOffered ? makeMechanism(mechanism, accounts_, features_.sasl) : nullptr;
    if (!made) {
        return "-ERR that mechanism is not known\r\n";
    }
    if (!showsPasswords() && !hidesPassword(mechanism)) {
        return std::string(kNotInClear);
    }
    sasl_.emplace(std::move(made));
    return answerOf(sasl_->begin(response));
}

std::string Pop3LogOn::answerOf(const SaslDialogue::Answer& answer) {
    if (answer.outcome == SaslDialogue::Outcome::Challenge) {
        return "+ " + answer.challenge + "\r\n";
    }
    sasl_.reset();
    switch (answer.outcome) {
    case SaslDialogue::Outcome::Malformed:
        return "-ERR that is no response of this mechanism\r\n";
    case SaslDialogue::Outcome::Cancelled:
        return "-ERR cancelled\r\n";
    default:
        return admit(answer.outcome == SaslDialogue::Outcome::Accepted);
    }
}

std::string Pop3LogOn::admit(bool admitted) {
    isAdmitted_ = admitted;
    return admitted ? "+OK welcome\r\n" : "-ERR [AUTH] wrong name or password\r\n";
}

} // namespace mailserver
