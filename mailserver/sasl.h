#pragma once

#include <optional>
#include <string>

namespace mailserver {

/** What a server says of its own accord in a log-on. */
struct SaslSettings {
    /** The challenge of CRAM-MD5, the server's part of SCRAM's nonce, and SCRAM's salt; empty means a new
     * one. */
    std::string challenge{};
    std::string nonce{};
    std::string salt{};
    unsigned iterations = 4096;
};

/** The server's side of one log-on by SASL (RFC 4422), in bytes. */
class SaslMechanism {
  public:
    enum class Outcome {
        Challenge, ///< The client is to answer.
        Accepted,
        Refused,  ///< Name or password is wrong.
        Malformed ///< The response is none of this mechanism.
    };

    struct Answer {
        Outcome outcome = Outcome::Malformed;
        std::string challenge{};
    };

    SaslMechanism() = default;
    virtual ~SaslMechanism() = default;
    SaslMechanism(const SaslMechanism&) = delete;
    SaslMechanism& operator=(const SaslMechanism&) = delete;

    /** Begins; the client may have sent its first response along. */
    virtual Answer begin(const std::optional<std::string>& response) = 0;

    /** Goes on with the response to the last challenge. */
    virtual Answer respond(const std::string& response) = 0;
};

} // namespace mailserver
