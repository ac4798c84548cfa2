#include "tests/sasl/fixed_random.h"

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace {
std::string& fixedBytes() {
    static thread_local std::string bytes;
    return bytes;
}
} // namespace

extern "C" ssize_t getrandom(void* buffer, std::size_t size, unsigned int flags) {
    const std::string& fixed = fixedBytes();
    if (!fixed.empty() && size == fixed.size()) {
        fixed.copy(static_cast<char*>(buffer), size);
        return static_cast<ssize_t>(size);
    }
    return ::syscall(SYS_getrandom, buffer, size, flags);
}

namespace support {

FixedRandom::FixedRandom(std::string bytes) {
    fixedBytes() = std::move(bytes);
}

FixedRandom::~FixedRandom() {
    fixedBytes().clear();
}

} // namespace support
