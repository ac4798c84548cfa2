#pragma once

// The program loads its mechanisms at the first log-on. A target that includes this has them built in, where
// the fuzzer sees which branches they take, with nonces that are the same in each run. Include it once.

#include "components/sasl/mechanism.h"
#include "platform/background.h"
#include "tests/sasl/fixed_random.h"

#include <functional>
#include <memory>
#include <string_view>

extern "C" sasl::Mechanism* brindlewakeMakeMechanism(std::string_view name, const sasl::Account& account,
                                                     const sasl::Limits& limits);

namespace sasl {

std::unique_ptr<Mechanism> makeMechanism(std::string_view name, const Account& account,
                                         const Limits& limits) {
    // A million rounds of hashing would only cost time.
    Limits few = limits;
    few.iterations = 5'000;
    return std::unique_ptr<Mechanism>(brindlewakeMakeMechanism(name, account, few));
}

void loadMechanisms() {}

} // namespace sasl

namespace platform {

// Without an event loop there are no windows to keep alive.
void runInBackground(const std::function<void()>& work) {
    work();
}

} // namespace platform

namespace fuzz {

/** While one lives, a mechanism makes the same nonce each time. */
struct FixedNonce {
    support::FixedRandom bytes{"eighteen octets..."};
};

} // namespace fuzz
