#include "components/directory/ldap_gate.h"

#include "components/directory/conversation.h"

#include <algorithm>

namespace directory {

namespace {
/** The tags of what a server may say: to a log-on, entries and the end of a search, references, to StartTLS,
 * and more. */
constexpr std::string_view kAnswers = "adesxy";

std::size_t numberIn(std::string_view bytes) {
    std::size_t number = 0;
    for (const char byte : bytes) {
        number = number << 8U | static_cast<unsigned char>(byte);
    }
    return number;
}
} // namespace

std::string LdapGate::pass(std::string_view bytes) {
    std::string passed;
    while (!bytes.empty() && !hasEnded_) {
        if (rest_ > 0) {
            const std::size_t count = std::min(rest_, bytes.size());
            passed += bytes.substr(0, count);
            bytes.remove_prefix(count);
            rest_ -= count;
            continue;
        }
        head_ += bytes.front();
        bytes.remove_prefix(1);
        if (isComplete()) {
            passed += head_;
            head_.clear();
        }
    }
    return passed;
}

/** A sequence, its length (X.690 section 8.1.3), the message's number and kind (RFC 4511 section 4.1.1). */
bool LdapGate::isComplete() {
    constexpr char sequence = 0x30;
    constexpr char integer = 0x02;
    constexpr std::size_t longForm = 0x80;
    constexpr std::size_t mostBytes = 4;
    const std::string_view head = head_;
    const std::size_t first = head.size() < 2 ? 0 : numberIn(head.substr(1, 1));
    const std::size_t lengthBytes = first < longForm ? 0 : first - longForm;
    hasEnded_ = head.front() != sequence || first == longForm || lengthBytes > mostBytes;
    const std::size_t number = 2 + lengthBytes;
    if (hasEnded_ || head.size() < number + 2) {
        return false;
    }
    const std::size_t numberBytes = numberIn(head.substr(number + 1, 1));
    hasEnded_ = head[number] != integer || numberBytes == 0 || numberBytes > mostBytes;
    const std::size_t operation = number + 2 + numberBytes;
    if (hasEnded_ || head.size() <= operation) {
        return false;
    }
    const std::size_t length = lengthBytes == 0 ? first : numberIn(head.substr(2, lengthBytes));
    // The number 0 is that of what nobody has asked for: the end of the session (RFC 4511 section 4.4.1).
    hasEnded_ = length < operation + 1 - number || length > Conversation::kMostMessageBytes ||
                numberIn(head.substr(number + 2, numberBytes)) == 0 ||
                kAnswers.find(head[operation]) == std::string_view::npos;
    rest_ = hasEnded_ ? 0 : length - (operation + 1 - number);
    return !hasEnded_;
}

} // namespace directory
