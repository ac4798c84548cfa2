#include "components/gnusasl/password_mechanism.h"

#include <utility>

namespace gnusasl {

PasswordMechanism::PasswordMechanism(Session session, const Course& course)
    : session_(std::move(session)), course_(course) {}

std::optional<std::string> PasswordMechanism::initialResponse() {
    if (!course_.clientSpeaksFirst || made_ > 0 || failed_) {
        return std::nullopt;
    }
    ++made_;
    return respond(*session_, "");
}

sasl::Answer PasswordMechanism::answer(std::string_view challenge) {
    const bool isPrompt = !course_.clientSpeaksFirst && !course_.readsChallenge;
    const bool fits = isPrompt || challenge.empty() == course_.clientSpeaksFirst;
    failed_ = failed_ || !fits || made_ == course_.responses;
    if (failed_) {
        return sasl::Fault::ServerNotProven;
    }
    ++made_;
    std::optional<std::string> response = respond(*session_, challenge);
    failed_ = !response;
    return response ? sasl::Answer(*std::move(response)) : sasl::Answer(sasl::Fault::ServerNotProven);
}

bool PasswordMechanism::isComplete() const {
    return !failed_ && made_ == course_.responses;
}

} // namespace gnusasl
