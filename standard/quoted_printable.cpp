#include "standard/quoted_printable.h"

#include "standard/hexadecimal.h"

#include <algorithm>
#include <string>

namespace standard {

namespace {
/** Behind the soft line break that begins with the sign here, or here when none does. */
std::size_t behindSoftBreak(std::string_view text, std::size_t sign) {
    const std::size_t end = std::min(text.find_first_not_of(" \t", sign + 1), text.size());
    if (end == text.size() || text[end] == '\n') {
        return std::min(end + 1, text.size());
    }
    return text.substr(end).starts_with("\r\n") ? end + 2 : sign;
}
} // namespace

void decodeQuotedPrintable(std::string_view text, const std::function<void(std::string_view)>& take) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t sign = std::min(text.find('=', at), text.size());
        if (sign > at) {
            take(text.substr(at, sign - at));
        }
        if (sign == text.size()) {
            return;
        }
        if (const auto byte = byteOfDigits(text.substr(sign + 1))) {
            take({&*byte, 1});
            at = sign + 3;
            continue;
        }
        at = behindSoftBreak(text, sign);
        if (at == sign) {
            take("=");
            ++at;
        }
    }
}

} // namespace standard
