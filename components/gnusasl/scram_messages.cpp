#include "components/gnusasl/scram_messages.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <vector>

namespace gnusasl {

namespace {
using sasl::Fault;

/** One "letter=value" of a message. */
struct Attribute {
    char name = '\0';
    std::string_view value;
};

std::optional<Attribute> attribute(std::string_view text) {
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const bool wellFormed = text.size() > 2 && isLetter(text[0]) && text[1] == '=';
    if (!wellFormed || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    return Attribute{text[0], text.substr(2)};
}

/** The attributes between commas; empty when one of them has not the form of an attribute. */
std::vector<Attribute> attributesOf(std::string_view message) {
    std::vector<Attribute> attributes;
    for (std::size_t start = 0; start <= message.size();) {
        const std::size_t comma = std::min(message.find(',', start), message.size());
        const auto next = attribute(message.substr(start, comma - start));
        if (!next) {
            return {};
        }
        attributes.push_back(*next);
        start = comma + 1;
    }
    return attributes;
}

/** Whether there is an extension that may not be ignored: no such extension exists (RFC 5802 section 5.1). */
bool mustBeUnderstood(const std::vector<Attribute>& attributes) {
    return std::any_of(attributes.begin(), attributes.end(),
                       [](const Attribute& one) { return one.name == 'm'; });
}

bool isPrintable(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '!' && c <= '~'; });
}

std::optional<Fault> faultInCount(std::string_view digits, std::uint32_t limit) {
    std::uint32_t count = 0;
    const char* const end = digits.data() + digits.size();
    const auto [next, problem] = std::from_chars(digits.data(), end, count);
    const bool wellFormed = digits.front() >= '1' && digits.front() <= '9' && next == end;
    if (!wellFormed) {
        return Fault::ServerNotProven;
    }
    const bool tooMany = problem == std::errc::result_out_of_range || count > limit;
    return tooMany ? std::optional(Fault::Refused) : std::nullopt;
}
} // namespace

std::string_view nonceIn(std::string_view clientFirst) {
    // A comma within the user name is escaped, so the last one is before the nonce.
    constexpr std::string_view before = ",r=";
    const std::size_t found = clientFirst.rfind(before);
    return found == std::string_view::npos ? std::string_view() : clientFirst.substr(found + before.size());
}

std::optional<Fault> faultInServerFirst(std::string_view message, std::string_view clientNonce,
                                        const sasl::Limits& limits) {
    const std::vector<Attribute> attributes = attributesOf(message);
    // RFC 5802 has the error in the last message only; some servers are done already here.
    if (!attributes.empty() && attributes[0].name == 'e') {
        return Fault::LogOnRefused;
    }
    const bool inOrder = attributes.size() >= 3 && attributes[0].name == 'r' && attributes[1].name == 's' &&
                         attributes[2].name == 'i';
    if (!inOrder || mustBeUnderstood(attributes)) {
        return Fault::ServerNotProven;
    }
    const std::string_view nonce = attributes[0].value;
    if (clientNonce.empty() || !nonce.starts_with(clientNonce) || !isPrintable(nonce)) {
        return Fault::ServerNotProven;
    }
    return faultInCount(attributes[2].value, limits.iterations);
}

std::variant<std::string_view, Fault> signatureIn(std::string_view serverFinal) {
    const std::vector<Attribute> attributes = attributesOf(serverFinal);
    if (attributes.empty() || mustBeUnderstood(attributes)) {
        return Fault::ServerNotProven;
    }
    if (attributes[0].name == 'e') {
        return Fault::LogOnRefused;
    }
    if (attributes[0].name != 'v') {
        return Fault::ServerNotProven;
    }
    // The library knows no extensions behind the signature.
    return serverFinal.substr(0, serverFinal.find(','));
}

} // namespace gnusasl
