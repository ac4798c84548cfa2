#pragma once

#include <string>

namespace support {

/**
 * While one lives, the system's random numbers are these bytes wherever exactly so many are asked for: the
 * test program's own getrandom() replaces the system's. So a mechanism makes the nonce of an example.
 */
class FixedRandom {
  public:
    explicit FixedRandom(std::string bytes);
    ~FixedRandom();
    FixedRandom(const FixedRandom&) = delete;
    FixedRandom& operator=(const FixedRandom&) = delete;
};

} // namespace support
