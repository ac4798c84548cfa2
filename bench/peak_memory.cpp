#include "bench/peak_memory.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace bench {

long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            long kibibytes = 0;
            status >> kibibytes;
            return kibibytes;
        }
    }
    throw std::runtime_error("/proc/self/status tells no VmHWM");
}

} // namespace bench
