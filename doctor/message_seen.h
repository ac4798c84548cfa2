#pragma once

#include "components/poplib/pop3_session.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace doctor {

/** Most bytes of a message that are looked at. */
inline constexpr std::size_t kMostBytesLookedAt = 1U << 20U;

/** What was seen of one message without fetching it. */
struct MessageSeen {
    int number = 0;
    /** Bytes, as the server reports them; nothing when it does not. */
    std::optional<std::int32_t> size;
    std::vector<poplib::HeaderLine> header;
    /** Lines with CR LF. */
    std::string body;
    /** Nothing of header and body is missing. */
    bool isWhole = false;
};

} // namespace doctor
