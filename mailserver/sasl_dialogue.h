#pragma once

#include "mailserver/sasl.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace mailserver {

/**
 * A log-on by SASL in lines of base64, as POP3 and SMTP carry it (RFC 5034 section 4, RFC 4954 section 4).
 * Which words stand around the lines is each protocol's own affair.
 */
class SaslDialogue {
  public:
    /** Longest line of base64, in bytes without its end (RFC 4954 section 4). */
    static constexpr std::size_t kMaximumLineBytes = 12288;

    enum class Outcome { Challenge, Accepted, Refused, Malformed, Cancelled };

    struct Answer {
        Outcome outcome = Outcome::Malformed;
        /** In base64. */
        std::string challenge{};
    };

    explicit SaslDialogue(std::unique_ptr<SaslMechanism> mechanism) : mechanism_(std::move(mechanism)) {}

    /** Begins with what stands behind the mechanism's name: nothing, "=" for an empty response, or base64. */
    Answer begin(std::string_view initialResponse);

    /** Goes on with a line of the client's: base64, or "*" to end it. */
    Answer take(std::string_view line);

  private:
    std::unique_ptr<SaslMechanism> mechanism_;
};

} // namespace mailserver
