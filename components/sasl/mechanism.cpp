#include "components/sasl/mechanism.h"

#include "platform/own_library.h"

namespace sasl {

namespace {
using Make = Mechanism* (*)(std::string_view name, const Account& account, const Limits& limits);

Make loadedMaker() {
    static const auto make = platform::functionIn<Make>("libbrindlewake_sasl.so", "brindlewakeMakeMechanism");
    return make;
}
} // namespace

std::unique_ptr<Mechanism> makeMechanism(std::string_view name, const Account& account,
                                         const Limits& limits) {
    const Make make = loadedMaker();
    return std::unique_ptr<Mechanism>(make == nullptr ? nullptr : make(name, account, limits));
}

void loadMechanisms() {
    loadedMaker();
}

} // namespace sasl
