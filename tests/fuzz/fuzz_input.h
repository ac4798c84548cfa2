#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace fuzz {

/** Ends the run unless the condition holds, which libFuzzer reports as a finding. */
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

/** The fuzzer's bytes, used up from the front: first for decisions, then for content. */
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(reinterpret_cast<const char*>(data), size) {}

    /** A number below the limit; 0 once the bytes are used up. */
    std::size_t below(std::size_t limit) {
        const std::string_view byte = take(1);
        return byte.empty() ? 0 : static_cast<unsigned char>(byte.front()) % limit;
    }

    std::string_view take(std::size_t bytes) {
        const std::string_view taken = bytes_.substr(0, bytes);
        bytes_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest() const { return bytes_; }

  private:
    std::string_view bytes_;
};

} // namespace fuzz
