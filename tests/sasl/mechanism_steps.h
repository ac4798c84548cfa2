#pragma once

#include "components/sasl/mechanism.h"

#include <optional>
#include <string>
#include <variant>

namespace support {

/** The response of an answer; nothing when it is a fault. */
inline std::optional<std::string> responseOf(const sasl::Answer& answer) {
    const auto* response = std::get_if<std::string>(&answer);
    return response == nullptr ? std::nullopt : std::optional(*response);
}

/** The fault of an answer; nothing when it is a response. */
inline std::optional<sasl::Fault> faultOf(const sasl::Answer& answer) {
    const auto* fault = std::get_if<sasl::Fault>(&answer);
    return fault == nullptr ? std::nullopt : std::optional(*fault);
}

} // namespace support
