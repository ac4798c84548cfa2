#include "mailserver/sasl_dialogue.h"

#include "mailserver/digests.h"

namespace mailserver {

namespace {

SaslDialogue::Answer inBase64(const SaslMechanism::Answer& answer) {
    switch (answer.outcome) {
    case SaslMechanism::Outcome::Challenge:
        return {SaslDialogue::Outcome::Challenge, toBase64(answer.challenge)};
    case SaslMechanism::Outcome::Accepted:
        return {SaslDialogue::Outcome::Accepted};
    case SaslMechanism::Outcome::Refused:
        return {SaslDialogue::Outcome::Refused};
    case SaslMechanism::Outcome::Malformed:
        break;
    }
    return {SaslDialogue::Outcome::Malformed};
}

} // namespace

SaslDialogue::Answer SaslDialogue::begin(std::string_view initialResponse) {
    if (initialResponse.empty()) {
        return inBase64(mechanism_->begin(std::nullopt));
    }
    const auto response =
        initialResponse == "=" ? std::optional<std::string>(std::string()) : fromBase64(initialResponse);
    return response ? inBase64(mechanism_->begin(response)) : Answer{Outcome::Malformed};
}

SaslDialogue::Answer SaslDialogue::take(std::string_view line) {
    if (line == "*") {
        return {Outcome::Cancelled};
    }
    const auto response = fromBase64(line);
    return response ? inBase64(mechanism_->respond(*response)) : Answer{Outcome::Malformed};
}

} // namespace mailserver
