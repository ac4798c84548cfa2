#include "components/sasl/attempt.h"

#include "components/sasl/base64.h"
#include "platform/background.h"

#include <optional>
#include <utility>
#include <variant>

namespace sasl {

namespace {
constexpr const char* kCancel = "*";

Verdict verdictOf(Fault fault) noexcept {
    switch (fault) {
    case Fault::Refused:
        return Verdict::NotUsable;
    case Fault::LogOnRefused:
        return Verdict::Refused;
    case Fault::ServerNotProven:
        break;
    }
    return Verdict::ServerNotProven;
}

/** In these the client's first message does not depend on the password. */
bool beginsWithoutPassword(std::string_view mechanism) {
    return mechanism.starts_with("SCRAM-");
}
} // namespace

Attempt::Attempt(std::string_view mechanism, const Account& account)
    : mechanism_(makeMechanism(mechanism, account)) {
    std::optional<std::string> first = mechanism_ ? mechanism_->initialResponse() : std::nullopt;
    if (first) {
        unsent_ = toBase64(*first);
        passwordProven_ = !beginsWithoutPassword(mechanism);
    }
}

std::string Attempt::initialResponse(std::size_t maximumBytes) {
    return unsent_.size() <= maximumBytes ? std::exchange(unsent_, {}) : std::string();
}

std::string Attempt::respond(std::string_view challenge) {
    if (!unsent_.empty()) {
        return std::exchange(unsent_, {});
    }
    std::optional<std::string> bytes = fromBase64(challenge);
    if (!bytes) {
        cancelledBy_ = Verdict::ServerNotProven;
        return kCancel;
    }
    passwordProven_ = true;
    Answer answer;
    // A server may demand a million rounds of hashing.
    platform::runInBackground([&] { answer = mechanism_->answer(*bytes); });
    if (const auto* const fault = std::get_if<Fault>(&answer)) {
        cancelledBy_ = verdictOf(*fault);
        return kCancel;
    }
    return toBase64(std::get<std::string>(answer));
}

Verdict Attempt::whenAccepted() const {
    if (cancelledBy_ != Verdict::LoggedOn) {
        return Verdict::ServerNotProven;
    }
    return mechanism_->isComplete() ? Verdict::LoggedOn : Verdict::ServerNotProven;
}

Verdict Attempt::whenRefused() const {
    if (cancelledBy_ != Verdict::LoggedOn) {
        return cancelledBy_;
    }
    return passwordProven_ ? Verdict::Refused : Verdict::NotUsable;
}

} // namespace sasl
