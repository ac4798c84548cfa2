#include "tests/support/places.h"

namespace support {

std::string buildFolder() {
    return BRINDLEWAKE_TEST_BUILD;
}

std::string dataFolder() {
    return BRINDLEWAKE_TEST_DATA;
}

} // namespace support
