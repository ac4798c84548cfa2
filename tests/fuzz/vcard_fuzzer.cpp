// Of cards, and of From lines, come names and addresses that the To field takes and reads back as they are.

#include "addresses/sendable_address.h"
#include "addresses/sender.h"
#include "addresses/vcard.h"
#include "addresses/written_address.h"
#include "components/smtplib/address_list.h"
#include "message/mail_mode.h"
#include "platform/text.h"
#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kMostAddressesOfACard = 20;

bool isUtf8(const std::string& text) {
    return platform::toBytes(platform::fromBytes(text)) == text;
}

/** What the program offers of a person, in the way of mail that is in use. */
void checkOffered(const std::string& name, const std::string& address,
                  smtplib::AddressCharacters characters) {
    if (!addresses::canBeSentTo(address)) {
        return;
    }
    const std::string shown = addresses::nameForShowing(name);
    fuzz::require(std::ranges::none_of(platform::fromBytes(shown), platform::isControlCharacter),
                  "no control character in a name");
    const std::string written = addresses::writtenAddress({shown, address, "Mail"});
    const auto read = smtplib::parseAddressList("x@example.org, " + written, characters);
    fuzz::require(read.size() == 2, "one address");
    fuzz::require(read.back().displayName == shown, "the same name");
    fuzz::require(read.back() == smtplib::parseAddressList(written, characters).front(), "the same address");
    fuzz::require(addresses::hasAddress(written, read.back().mailbox()), "found again");
}

void checkInBothWays(const std::string& name, const std::string& address) {
    useMailMode(MailMode::Standard);
    checkOffered(name, address, smtplib::AddressCharacters::Any);
    useMailMode(MailMode::House);
    checkOffered(name, address, smtplib::AddressCharacters::Ascii);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (const addresses::Card& card : addresses::readCards(text).cards) {
        fuzz::require(isUtf8(card.name), "a name in UTF-8");
        fuzz::require(card.addresses.size() <= kMostAddressesOfACard, "few addresses");
        for (const std::string& address : card.addresses) {
            fuzz::require(!address.empty() && isUtf8(address), "an address in UTF-8");
            checkInBothWays(card.name, address);
        }
    }
    if (const auto sender = addresses::senderOf(text)) {
        checkInBothWays(sender->name, sender->address);
    }
    if (text.find('=') == std::string::npos) {
        // A line that goes on in the next one would swallow its beginning.
        const std::string ann = "\r\nBEGIN:VCARD\r\nVERSION:4.0\r\nFN:Ann\r\nEND:VCARD\r\n";
        const auto read = addresses::readCards(text + ann);
        fuzz::require(!read.cards.empty() && read.cards.back() == addresses::Card{"Ann", {}},
                      "whatever stands before a card, it is read");
    }
    return 0;
}
