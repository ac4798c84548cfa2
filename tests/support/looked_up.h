#pragma once

#include "addresses/address_source.h"
#include "tests/support/application.h"
#include "tests/support/waiting.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <utility>

namespace addresses {

/** For the messages of tests. */
inline std::ostream& operator<<(std::ostream& stream, const FoundAddress& found) {
    return stream << found.name << " <" << found.address << "> from " << found.source;
}

} // namespace addresses

namespace support {

/** What a place finds; the test fails when it tells nothing in time. */
inline addresses::FoundAddresses lookedUp(addresses::AddressSource& source, const std::string& typed) {
    application();
    std::optional<addresses::FoundAddresses> told;
    source.search(typed, [&told](addresses::FoundAddresses outcome) { told = std::move(outcome); });
    EXPECT_FALSE(told) << "told from within the call";
    EXPECT_TRUE(eventsRunUntil([&told] { return told.has_value(); })) << "nothing was told";
    return told.value_or(addresses::FoundAddresses());
}

} // namespace support
