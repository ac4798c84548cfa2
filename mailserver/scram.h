#pragma once

#include "mailserver/accounts.h"
#include "mailserver/digests.h"
#include "mailserver/sasl.h"

#include <optional>
#include <string>
#include <string_view>

namespace mailserver {

/** SCRAM (RFC 5802, RFC 7677) without channel binding. Its last challenge is the server's signature. */
class Scram : public SaslMechanism {
  public:
    Scram(Digest digest, const Accounts& accounts, const SaslSettings& settings);

    Answer begin(const std::optional<std::string>& response) override;
    Answer respond(const std::string& response) override;

  private:
    enum class State { First, Final, Confirmed };

    Answer takeFirst(std::string_view message);
    Answer takeFinal(std::string_view message);

    Digest digest_;
    const Accounts& accounts_;
    std::string salt_;
    unsigned iterations_;
    /** The server's part; once the client has said its own, both. */
    std::string nonce_;
    State state_ = State::First;
    /** What comes before the first message proper: that no channel is bound, and for whom the client acts. */
    std::string preface_;
    /** Both first messages, as they count for the signatures. */
    std::string exchanged_;
    std::optional<std::string> password_;
};

} // namespace mailserver
