// The one library that knows GNU SASL. It is loaded at the first log-on by a mechanism.

#include "components/gnusasl/mechanisms.h"

#include "components/gnusasl/password_mechanism.h"
#include "components/gnusasl/scram_mechanism.h"

#include <utility>

namespace gnusasl {

namespace {
using sasl::Account;
using sasl::Limits;
using sasl::Mechanism;

constexpr Course kPlain{.responses = 1, .clientSpeaksFirst = true, .readsChallenge = false};
constexpr Course kLogin{.responses = 2, .clientSpeaksFirst = false, .readsChallenge = false};
constexpr Course kCramMd5{.responses = 1, .clientSpeaksFirst = false, .readsChallenge = true};

/** C strings end at a NUL, and no mechanism has one in a name or a password. */
bool hasNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

bool bothCanBePrepared(const Account& account) {
    return canBePrepared(account.user) && canBePrepared(account.password);
}

std::unique_ptr<Mechanism> passwordMechanism(const char* name, const Account& account, const Course& course) {
    Session session = startSession(name, account);
    return session ? std::make_unique<PasswordMechanism>(std::move(session), course) : nullptr;
}

std::unique_ptr<Mechanism> scram(const char* name, const Account& account, const Limits& limits) {
    Session session = bothCanBePrepared(account) ? startSession(name, account) : nullptr;
    return session ? std::make_unique<ScramMechanism>(std::move(session), limits) : nullptr;
}
} // namespace

std::unique_ptr<Mechanism> makeMechanism(std::string_view name, const Account& account,
                                         const Limits& limits) {
    if (hasNul(account.user) || hasNul(account.password)) {
        return nullptr;
    }
    if (name == "SCRAM-SHA-256") {
        return scram("SCRAM-SHA-256", account, limits);
    }
    if (name == "SCRAM-SHA-1") {
        return scram("SCRAM-SHA-1", account, limits);
    }
    if (name == "CRAM-MD5") {
        return bothCanBePrepared(account) ? passwordMechanism("CRAM-MD5", account, kCramMd5) : nullptr;
    }
    if (name == "PLAIN") {
        return passwordMechanism("PLAIN", account, kPlain);
    }
    return name == "LOGIN" ? passwordMechanism("LOGIN", account, kLogin) : nullptr;
}

} // namespace gnusasl

extern "C" __attribute__((visibility("default"))) sasl::Mechanism*
brindlewakeMakeMechanism(std::string_view name, const sasl::Account& account, const sasl::Limits& limits) {
    return gnusasl::makeMechanism(name, account, limits).release();
}
