#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace sasl {

/** Who logs on; both in UTF-8. */
struct Account {
    std::string user;
    std::string password;
};

/** Why there is no response to a challenge. The exchange has to be cancelled then. */
enum class Fault {
    /** This mechanism cannot go on, another one may be tried: the server asks for too many iterations. */
    Refused,
    /**
     * The server has not proven that it knows the password, or sends what this mechanism does not have: a
     * wrong signature or nonce, nonsense, one challenge too many.
     */
    ServerNotProven,
    /** The server says within the mechanism that the log-on has failed, as for a wrong password. */
    LogOnRefused,
};

/** The response to a challenge, which may be empty, or why there is none. */
using Answer = std::variant<std::string, Fault>;

/** What a server may ask for. */
struct Limits {
    /** Most iterations of SCRAM's key derivation; a million take seconds. */
    std::uint32_t iterations = 1'000'000;
};

/**
 * One log-on by one mechanism (RFC 4422): challenges go in, responses come out, as bytes without base64.
 * Responses may hold the password. One thread at a time may use it, and answering may take seconds.
 */
class Mechanism {
  public:
    Mechanism() = default;
    virtual ~Mechanism() = default;
    Mechanism(const Mechanism&) = delete;
    Mechanism& operator=(const Mechanism&) = delete;

    /**
     * The response that may go along with the command; nothing where the server speaks first. Where it is not
     * asked for before, an empty challenge is answered by it.
     */
    virtual std::optional<std::string> initialResponse() = 0;

    /** The response to a challenge. After a fault there are only faults. */
    virtual Answer answer(std::string_view challenge) = 0;

    /**
     * Whether the server's word that the log-on has succeeded may be believed: all responses have been made,
     * and a mechanism that proves the server (SCRAM) has seen the proof.
     */
    virtual bool isComplete() const = 0;
};

/**
 * Makes a mechanism by its name in capitals: SCRAM-SHA-256, SCRAM-SHA-1, CRAM-MD5, PLAIN or LOGIN. Returns
 * nullptr when the mechanism is not known, when it cannot express the account, and when the library that does
 * the mechanisms cannot be loaded, which happens at the first call. No mechanism can express a NUL; SCRAM and
 * CRAM-MD5 cannot express a user name or password that SASLprep (RFC 4013) forbids or leaves nothing of.
 */
std::unique_ptr<Mechanism> makeMechanism(std::string_view name, const Account& account,
                                         const Limits& limits = {});

/** Loads the library ahead of the first call; does nothing when it is loaded, or cannot be. */
void loadMechanisms();

} // namespace sasl
