#include "components/poplib/capabilities.h"

#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <variant>

namespace poplib {

namespace {
/** Takes the first word of the line; empty at the end of the line. */
std::string_view takeWord(std::string_view& line) {
    constexpr std::string_view spaces = " \t";
    line.remove_prefix(std::min(line.find_first_not_of(spaces), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(spaces));
    line.remove_prefix(word.size());
    return word;
}
} // namespace

void Capabilities::add(std::string_view line) {
    known = true;
    lines.emplace_back(line);
    const std::string keyword = platform::upperCase(takeWord(line));
    stls = stls || keyword == "STLS";
    user = user || keyword == "USER";
    top = top || keyword == "TOP";
    pipelining = pipelining || keyword == "PIPELINING";
    utf8 = utf8 || keyword == "UTF8";
    if (keyword == "LOGIN-DELAY") {
        const std::string_view seconds = takeWord(line);
        std::int32_t number = 0;
        if (std::from_chars(seconds.data(), seconds.data() + seconds.size(), number).ec == std::errc{}) {
            loginDelay = number;
        }
    }
    if (keyword != "SASL") {
        return;
    }
    for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
        mechanisms.push_back(platform::upperCase(word));
    }
}

bool Capabilities::offers(std::string_view mechanism) const {
    return std::find(mechanisms.begin(), mechanisms.end(), mechanism) != mechanisms.end();
}

Capabilities askCapabilities(Exchange& exchange) {
    Capabilities can;
    can.known = readResponse(exchange, capaCommand(), [&can](const Event& event) {
        if (const auto* const line = std::get_if<ListingLine>(&event)) {
            can.add(line->text);
        }
    });
    return can;
}

} // namespace poplib
