// Compares HeaderEvents, which remembers what it has searched, with the same rules in functions that do not.
//
// Input: header lines. Each is a byte that says what happens before it, a field up to a colon, and a value up
// to a line feed.

#include "email/header_events.h"
#include "platform/runtime_error.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/reference_parser.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

using email::MessageSummary;

void requireSame(const MessageSummary& left, const MessageSummary& right) {
    fuzz::require(left.ContentType == right.ContentType, "the same ContentType");
    fuzz::require(left.Boundary == right.Boundary, "the same Boundary");
    fuzz::require(left.HeaderText == right.HeaderText, "the same HeaderText");
    fuzz::require(left.Subject == right.Subject && left.From == right.From && left.Date == right.Date,
                  "the same Subject, From and Date");
}

std::string takeUntil(fuzz::Input& input, char end) {
    const std::string_view rest = input.rest();
    std::string text(input.take(std::min(rest.find(end), rest.size())));
    input.take(1);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    email::HeaderEvents events;
    std::array<MessageSummary, 2> summaries;
    std::array<MessageSummary, 2> expected;
    std::size_t current = 0;
    while (!input.rest().empty()) {
        const std::size_t choice = input.below(16);
        if (choice == 1) {
            email::resetForListing(summaries.at(current));
            email::resetForListing(expected.at(current));
        } else if (choice == 2) {
            current = 1 - current;
        }
        const std::string field = takeUntil(input, ':');
        const std::string value = takeUntil(input, '\n');
        const int error = platform::errorNumberOf([&] { events.add(summaries.at(current), field, value); });
        const int expectedError = platform::errorNumberOf(
            [&] { support::reference::addHeaderLine(expected.at(current), field, value); });
        fuzz::require(error == expectedError, "the same error");
        requireSame(summaries.at(current), expected.at(current));
    }
    return 0;
}
