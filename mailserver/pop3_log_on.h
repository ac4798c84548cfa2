#pragma once

#include "mailserver/accounts.h"
#include "mailserver/sasl.h"
#include "mailserver/sasl_dialogue.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mailserver {

/** What a POP3 server offers besides the commands of RFC 1939. */
struct Pop3Features {
    /** STLS (RFC 2595), until the connection is encrypted. */
    bool stls = false;
    /** USER and PASS. */
    bool user = true;
    /** Passwords may come in clear. Otherwise USER, PASS and mechanisms that show the password need
     * encryption. */
    bool passwordInClear = true;
    /** Mechanisms for AUTH (RFC 5034) in the order in which they are offered; unknown ones are refused. */
    std::vector<std::string> mechanisms{};
    SaslSettings sasl{};
    /** APOP with this timestamp, a message-id in its brackets, in the greeting; empty means no APOP. */
    std::string timestamp{};
    /** UTF8 (RFC 6856), accepted before the log-on. */
    bool utf8 = false;
};

/** The server's side of the log-on of one POP3 session: USER and PASS, APOP, AUTH. */
class Pop3LogOn {
  public:
    Pop3LogOn(Accounts accounts, Pop3Features features)
        : accounts_(std::move(accounts)), features_(std::move(features)) {}

    const Pop3Features& features() const noexcept { return features_; }

    /** The lines of CAPA that tell how to log on now: the one of USER, and the one of SASL. */
    std::string userCapability() const;
    std::string saslCapability() const;

    /** The answer to a command for logging on; nothing when the server does not have it. */
    std::optional<std::string> answer(const std::string& command, std::string_view argument);

    /** True while AUTH waits for the client's next line, which goOn() then takes. */
    bool isInDialogue() const { return sasl_.has_value(); }

    std::string goOn(std::string_view line) { return answerOf(sasl_->take(line)); }

    /** Ends what AUTH has begun. */
    void cancel() { sasl_.reset(); }

    bool isAdmitted() const { return isAdmitted_; }

    /** From here on nobody else can read the passwords; a name that has come is forgotten. */
    void encrypted();

  private:
    bool showsPasswords() const;
    std::string userName(std::string_view argument);
    std::string password(std::string_view argument);
    std::string digest(std::string_view argument);
    std::string beginDialogue(std::string_view argument);
    std::string answerOf(const SaslDialogue::Answer& answer);
    std::string admit(bool admitted);

    Accounts accounts_;
    Pop3Features features_;
    bool isEncrypted_ = false;
    bool isAdmitted_ = false;
    std::string user_;
    /** What AUTH has begun. */
    std::optional<SaslDialogue> sasl_;
};

} // namespace mailserver
