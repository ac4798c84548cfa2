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

/** What an SMTP server offers and demands for encryption and log-on. */
struct SmtpFeatures {
    /** STARTTLS (RFC 3207), until the connection is encrypted. */
    bool startTls = false;
    /** Before the connection is encrypted, neither MAIL nor AUTH is taken. */
    bool demandsEncryption = false;
    /** Mechanisms for AUTH (RFC 4954) in the order in which they are offered; unknown ones are refused. */
    std::vector<std::string> mechanisms{};
    /** Offers them with an equal sign too, as servers did before there was an RFC. */
    bool offersInOldForm = false;
    /** Passwords may come in clear. Otherwise PLAIN and LOGIN are offered and taken when it is encrypted
     * only. */
    bool passwordInClear = true;
    /** Mechanisms that are offered and then refused as too weak. */
    std::vector<std::string> tooWeak{};
    /** Who has not logged on cannot send. */
    bool demandsLogOn = false;
    SaslSettings sasl{};
};

/** The server's side of AUTH in one SMTP session. */
class SmtpLogOn {
  public:
    SmtpLogOn(Accounts accounts, SmtpFeatures features)
        : accounts_(std::move(accounts)), features_(std::move(features)) {}

    const SmtpFeatures& features() const noexcept { return features_; }

    /** The lines of the answer to EHLO that tell how to log on now, without their codes. */
    std::vector<std::string> capabilities() const;

    /** The answer to AUTH, with what stands behind it. */
    std::string begin(std::string_view argument);

    /** True while AUTH waits for the client's next line, which goOn() then takes. */
    bool isInDialogue() const { return sasl_.has_value(); }

    std::string goOn(std::string_view line) { return answerOf(sasl_->take(line)); }

    /** Ends what AUTH has begun. */
    void cancel() { sasl_.reset(); }

    bool isAdmitted() const { return isAdmitted_; }

    /** From here on nobody else can read the passwords. */
    void encrypted() { isEncrypted_ = true; }

  private:
    bool takes(std::string_view mechanism) const;
    std::string answerOf(const SaslDialogue::Answer& answer);

    Accounts accounts_;
    SmtpFeatures features_;
    bool isEncrypted_ = false;
    bool isAdmitted_ = false;
    /** What AUTH has begun. */
    std::optional<SaslDialogue> sasl_;
};

} // namespace mailserver
