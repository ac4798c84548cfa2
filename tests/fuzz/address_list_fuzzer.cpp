// A list of addresses is refused, or gives mailboxes that can stand in a command and mean the same again.

#include "components/smtplib/address_list.h"
#include "components/smtplib/commands.h"
#include "components/smtplib/message_header.h"
#include "platform/runtime_error.h"
#include "tests/fuzz/fuzz_input.h"

#include <string>
#include <string_view>
#include <vector>

namespace {

using smtplib::Address;

std::vector<std::string> mailboxesOf(const std::vector<Address>& addresses) {
    std::vector<std::string> mailboxes;
    for (const Address& address : addresses) {
        mailboxes.push_back(address.mailbox());
    }
    return mailboxes;
}

void checkMailbox(const std::string& mailbox) {
    bool quoted = false;
    for (std::size_t index = 0; index < mailbox.size(); ++index) {
        const char character = mailbox[index];
        fuzz::require(character >= ' ' && character <= '~', "printable ASCII only");
        fuzz::require(quoted ||
                          (character != ' ' && character != '<' && character != '>' && character != ','),
                      "nothing outside quotes that could end a path");
        if (quoted && character == '\\') {
            ++index;
        } else if (character == '"') {
            quoted = !quoted;
        }
    }
    fuzz::require(!quoted, "quotes are closed");
    fuzz::require(smtplib::rcptCommand(mailbox).sent.size() + 2 <= smtplib::kMaximumCommandBytes,
                  "fits into a command");
}

/** The value of the header's only folded field, unfolded. */
std::string unfoldedTo(const std::vector<Address>& addresses) {
    smtplib::HeaderFields fields;
    fields.sender = addresses.front();
    fields.recipients = addresses;
    const std::string header = smtplib::messageHeader(fields);
    const std::size_t begin = header.find("\r\nTo:") + 5;
    std::string value = header.substr(begin, header.find("\r\nSubject:") - begin);
    for (std::size_t fold = value.find("\r\n"); fold != std::string::npos; fold = value.find("\r\n", fold)) {
        fuzz::require(fold + 2 < value.size() && (value[fold + 2] == ' ' || value[fold + 2] == '\t'),
                      "a fold is followed by a blank");
        value.erase(fold, 2);
    }
    return value;
}

/** Where more than ASCII is allowed, a list is refused with another number, or reads the same again. */
void checkBeyondAscii(std::string_view text, smtplib::AddressCharacters characters) {
    std::vector<Address> addresses;
    const int error =
        platform::errorNumberOf([&] { addresses = smtplib::parseAddressList(text, characters); });
    const bool needsMore = error == platform::errors::AddressBeyondAscii;
    fuzz::require(error == 0 || error == platform::errors::BadAddress ||
                      error == platform::errors::FieldHoldsLineEnd ||
                      (needsMore && characters == smtplib::AddressCharacters::AnyInDomain),
                  "refused with a number of its own");
    const auto fault = smtplib::findAddressFault(text, characters);
    fuzz::require(fault.has_value() == (error != 0), "a fault where it is refused, and only there");
    std::string joined;
    for (const Address& address : addresses) {
        joined += address.mailbox() + ", ";
    }
    fuzz::require(joined.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos, "one line");
    fuzz::require(mailboxesOf(smtplib::parseAddressList(joined, characters)) == mailboxesOf(addresses),
                  "the same again");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<Address> addresses;
    const int error = platform::errorNumberOf([&] { addresses = smtplib::parseAddressList(text); });
    fuzz::require(error == 0 || error == platform::errors::BadAddress ||
                      error == platform::errors::FieldHoldsLineEnd,
                  "refused with a number of its own");
    const auto fault = smtplib::findAddressFault(text);
    fuzz::require(fault.has_value() == (error != 0), "a fault where it is refused, and only there");
    fuzz::require(!fault || (fault->error == error && fault->begin < fault->end && fault->end <= size),
                  "a fault is a part of the text");
    checkBeyondAscii(text, smtplib::AddressCharacters::AnyInDomain);
    checkBeyondAscii(text, smtplib::AddressCharacters::Any);
    if (addresses.empty()) {
        return 0;
    }
    const std::vector<std::string> mailboxes = mailboxesOf(addresses);
    std::string joined;
    for (const std::string& mailbox : mailboxes) {
        checkMailbox(mailbox);
        joined += mailbox + ", ";
    }
    fuzz::require(mailboxesOf(smtplib::parseAddressList(joined)) == mailboxes, "the same again");
    fuzz::require(mailboxesOf(smtplib::parseAddressList(unfoldedTo(addresses))) == mailboxes,
                  "the same out of a header");
    return 0;
}
