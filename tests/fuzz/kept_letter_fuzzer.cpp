// Reading a kept letter copes with any bytes. A letter that was read, kept and read again is the same.

#include "message/kept_letter.h"
#include "tests/fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto first = keptLetterIn(fuzz::Input(data, size).rest());
    if (first) {
        const auto second = keptLetterIn(keptLetterFile(*first));
        fuzz::require(second.has_value(), "what was kept can be read");
        fuzz::require(*second == *first, "what was kept reads back as it was");
    }
    return 0;
}
