#include "addresses/sender.h"

#include "components/smtplib/address_list.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <vector>

namespace addresses {

namespace {
std::string unquoted(std::string_view name) {
    constexpr std::size_t bothQuotes = 2;
    if (name.size() < bothQuotes || !name.starts_with('"') || !name.ends_with('"')) {
        return std::string(name);
    }
    name = name.substr(1, name.size() - bothQuotes);
    std::string plain;
    for (std::size_t at = 0; at < name.size(); ++at) {
        at += name[at] == '\\' && at + 1 < name.size() ? 1 : 0;
        plain += name[at];
    }
    return plain;
}

/** What stands in the first comment, as in "ann@example.org (Ann Smith)". */
std::string commentIn(std::string_view from) {
    const std::size_t opening = from.find('(');
    const std::size_t closing = opening == std::string_view::npos ? opening : from.find(')', opening);
    return closing == std::string_view::npos
               ? std::string()
               : std::string(platform::trimmed(from.substr(opening + 1, closing - opening - 1)));
}
} // namespace

std::optional<Sender> senderOf(std::string_view from) {
    std::vector<smtplib::Address> read;
    const int error = platform::errorNumberOf(
        [&] { read = smtplib::parseAddressList(from, smtplib::AddressCharacters::Any); });
    if (error == 0 && !read.empty()) {
        const smtplib::Address& first = read.front();
        return Sender{first.displayName.empty() ? commentIn(from) : first.displayName, first.mailbox()};
    }
    const std::size_t closing = from.rfind('>');
    const std::size_t opening = from.rfind('<', closing);
    if (closing == std::string_view::npos || opening == std::string_view::npos) {
        return std::nullopt;
    }
    return Sender{unquoted(platform::trimmed(from.substr(0, opening))),
                  std::string(platform::trimmed(from.substr(opening + 1, closing - opening - 1)))};
}

} // namespace addresses
