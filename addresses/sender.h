#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace addresses {

/** Who a message comes from, as its From line has it. */
struct Sender {
    /** Empty where the line tells none. */
    std::string name;
    std::string address;

    bool operator==(const Sender&) const = default;
};

/**
 * The first sender of a From line (RFC 5322 section 3.4), also where a decoded name has commas or other signs
 * outside quotes. The name may stand in a comment behind the address. Nothing when no address is there.
 */
std::optional<Sender> senderOf(std::string_view from);

} // namespace addresses
