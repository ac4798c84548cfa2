#pragma once

#include "addresses/address_source.h"

#include <functional>
#include <memory>

namespace addresses {

/**
 * Where the settings have addresses looked up: in the directory server when AddressLookup is exactly
 * "Directory Server", otherwise in the member's own address book. One for each window that is opened; on the
 * user-interface thread only.
 */
std::unique_ptr<AddressSource> makeSourceInUse();

/** Replaces that place by a function, for tests. An empty one brings the real one back. */
void replaceSourceInUse(std::function<std::unique_ptr<AddressSource>()> standIn);

} // namespace addresses
