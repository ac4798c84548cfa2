#include "components/gnusasl/scram_mechanism.h"

#include "components/gnusasl/scram_messages.h"

#include <utility>

namespace gnusasl {

namespace {
using sasl::Answer;
using sasl::Fault;
} // namespace

ScramMechanism::ScramMechanism(Session session, const sasl::Limits& limits)
    : session_(std::move(session)), limits_(limits) {}

std::optional<std::string> ScramMechanism::initialResponse() {
    if (next_ != Next::NothingYet) {
        return std::nullopt;
    }
    std::optional<std::string> message = respond(*session_, "");
    next_ = message ? Next::FirstMessage : Next::Nothing;
    nonce_ = nonceIn(message.value_or(""));
    return message;
}

Answer ScramMechanism::answer(std::string_view challenge) {
    Answer made = answerTo(challenge);
    if (std::holds_alternative<Fault>(made)) {
        next_ = Next::Nothing;
    }
    return made;
}

Answer ScramMechanism::answerTo(std::string_view challenge) {
    switch (next_) {
    case Next::NothingYet:
        return answerToNothing(challenge);
    case Next::FirstMessage:
        return answerToFirst(challenge);
    case Next::FinalMessage:
        return answerToFinal(challenge);
    case Next::Success:
    case Next::Nothing:
        break;
    }
    return Fault::ServerNotProven;
}

Answer ScramMechanism::answerToNothing(std::string_view challenge) {
    std::optional<std::string> message = challenge.empty() ? initialResponse() : std::nullopt;
    return message ? Answer(*std::move(message)) : Answer(Fault::ServerNotProven);
}

Answer ScramMechanism::answerToFirst(std::string_view message) {
    if (const auto fault = faultInServerFirst(message, nonce_, limits_)) {
        return *fault;
    }
    std::optional<std::string> proof = respond(*session_, message);
    next_ = Next::FinalMessage;
    return proof ? Answer(*std::move(proof)) : Answer(Fault::ServerNotProven);
}

Answer ScramMechanism::answerToFinal(std::string_view message) {
    const auto signature = signatureIn(message);
    if (const auto* fault = std::get_if<Fault>(&signature)) {
        return *fault;
    }
    std::optional<std::string> nothing = respond(*session_, std::get<std::string_view>(signature));
    next_ = Next::Success;
    return nothing ? Answer(*std::move(nothing)) : Answer(Fault::ServerNotProven);
}

} // namespace gnusasl
