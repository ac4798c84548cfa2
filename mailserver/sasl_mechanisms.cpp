#include "mailserver/sasl_mechanisms.h"

#include "mailserver/digests.h"
#include "mailserver/scram.h"

#include <utility>

namespace mailserver {

namespace {

using Outcome = SaslMechanism::Outcome;

Outcome outcomeOf(bool isRight) {
    return isRight ? Outcome::Accepted : Outcome::Refused;
}

/** RFC 4616. */
class Plain : public SaslMechanism {
  public:
    explicit Plain(const Accounts& accounts) : accounts_(accounts) {}

    Answer begin(const std::optional<std::string>& response) override {
        return response ? respond(*response) : Answer{Outcome::Challenge};
    }

    Answer respond(const std::string& response) override {
        const std::size_t user = response.find('\0') + 1;
        const std::size_t password = response.find('\0', user) + 1;
        if (user == 0 || password == 0 || response.find('\0', password) != std::string::npos) {
            return {Outcome::Malformed};
        }
        const std::string name = response.substr(user, password - user - 1);
        const std::string actsFor = response.substr(0, user - 1);
        return {outcomeOf((actsFor.empty() || actsFor == name) &&
                          accounts_.admits(name, response.substr(password)))};
    }

  private:
    const Accounts& accounts_;
};

/** No RFC has it; every server asks with these two words. */
class Login : public SaslMechanism {
  public:
    explicit Login(const Accounts& accounts) : accounts_(accounts) {}

    Answer begin(const std::optional<std::string>& response) override {
        return response ? respond(*response) : Answer{Outcome::Challenge, "Username:"};
    }

    Answer respond(const std::string& response) override {
        if (!user_) {
            user_ = response;
            return {Outcome::Challenge, "Password:"};
        }
        return {outcomeOf(accounts_.admits(*user_, response))};
    }

  private:
    const Accounts& accounts_;
    std::optional<std::string> user_;
};

/** RFC 2195. */
class CramMd5 : public SaslMechanism {
  public:
    CramMd5(const Accounts& accounts, std::string challenge)
        : accounts_(accounts), challenge_(std::move(challenge)) {}

    Answer begin(const std::optional<std::string>& response) override {
        return response ? Answer{Outcome::Malformed} : Answer{Outcome::Challenge, challenge_};
    }

    Answer respond(const std::string& response) override {
        const std::size_t space = response.rfind(' ');
        if (space == std::string::npos) {
            return {Outcome::Malformed};
        }
        const auto password =
            accounts_.passwordOf ? accounts_.passwordOf(response.substr(0, space)) : std::nullopt;
        return {outcomeOf(password && response.substr(space + 1) ==
                                          lowerHex(hmacOf(Digest::Md5, *password, challenge_)))};
    }

  private:
    const Accounts& accounts_;
    std::string challenge_;
};

} // namespace

bool hidesPassword(std::string_view mechanism) {
    return mechanism != "PLAIN" && mechanism != "LOGIN";
}

std::unique_ptr<SaslMechanism> makeMechanism(const std::string& name, const Accounts& accounts,
                                             const SaslSettings& settings) {
    if (name == "PLAIN") {
        return std::make_unique<Plain>(accounts);
    }
    if (name == "LOGIN") {
        return std::make_unique<Login>(accounts);
    }
    if (name == "CRAM-MD5") {
        return std::make_unique<CramMd5>(accounts, settings.challenge.empty()
                                                       ? "<" + randomToken(15) + "@demo.example.org>"
                                                       : settings.challenge);
    }
    if (name == "SCRAM-SHA-1") {
        return std::make_unique<Scram>(Digest::Sha1, accounts, settings);
    }
    if (name == "SCRAM-SHA-256") {
        return std::make_unique<Scram>(Digest::Sha256, accounts, settings);
    }
    return nullptr;
}

} // namespace mailserver
