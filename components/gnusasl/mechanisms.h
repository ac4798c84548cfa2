#pragma once

#include "components/sasl/mechanism.h"

#include <memory>
#include <string_view>

namespace gnusasl {

/** What sasl::makeMechanism() returns. */
std::unique_ptr<sasl::Mechanism> makeMechanism(std::string_view name, const sasl::Account& account,
                                               const sasl::Limits& limits);

} // namespace gnusasl
