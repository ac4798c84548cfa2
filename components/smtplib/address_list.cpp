#include "components/smtplib/address_list.h"

#include "components/smtplib/address_tokens.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

namespace smtplib {

namespace {
using Kind = AddressToken::Kind;
namespace errors = platform::errors;

/** The words before the angle brackets, with a space between any two. */
void setDisplayName(Address& address, const std::vector<AddressToken>& words) {
    for (const AddressToken& word : words) {
        if (word.kind == Kind::Literal) {
            refuseAddress();
        }
        address.nameWasQuoted = address.nameWasQuoted || word.kind == Kind::Quoted;
        address.displayName += (&word == &words.front() ? "" : " ") + word.text;
    }
}

class AddressListParser {
  public:
    AddressListParser(std::string_view text, AddressCharacters characters)
        : tokens_(text), characters_(characters) {}

    std::vector<Address> parse() {
        advance();
        while (token_.kind != Kind::End) {
            parseItem();
        }
        if (inGroup_) {
            itemBegin_ = groupBegin_;
            refuseAddress();
        }
        return std::move(addresses_);
    }

    /** Where the item that is being read, or could not be read, begins: behind a comma or a colon. */
    std::size_t itemBegin() const noexcept { return itemBegin_; }

  private:
    void advance() { token_ = tokens_.next(); }

    void parseItem() {
        const std::vector<AddressToken> words = takeWords();
        if (token_.is('@')) {
            addresses_.push_back(addressOf(words));
            endItem();
        } else if (token_.is('<')) {
            advance();
            Address address = addressOf(takeWords());
            setDisplayName(address, words);
            addresses_.push_back(std::move(address));
            mustBe('>');
            endItem();
        } else if (token_.is(':') && !words.empty() && !inGroup_) {
            inGroup_ = true;
            groupBegin_ = itemBegin_;
            beginItem();
        } else if (words.empty()) {
            endItem();
        } else {
            refuseAddress();
        }
    }

    std::vector<AddressToken> takeWords() {
        std::vector<AddressToken> words;
        while (token_.kind != Kind::Special && token_.kind != Kind::End) {
            words.push_back(std::exchange(token_, tokens_.next()));
        }
        return words;
    }

    void mustBe(char special) {
        if (!token_.is(special)) {
            refuseAddress();
        }
        advance();
    }

    /** The address whose words before the "@" these are; the "@" and the domain are taken. */
    Address addressOf(const std::vector<AddressToken>& words) {
        mustBe('@');
        const AddressToken domain = std::exchange(token_, {});
        advance();
        if (words.size() != 1 || words.front().kind == Kind::Literal) {
            refuseAddress();
        }
        Address address;
        address.domain = domainOnWire(domain, characters_);
        address.localPart = localPartOnWire(words.front(), characters_);
        constexpr std::size_t bracketsAndSign = 3;
        if (address.localPart.size() > kMaximumLocalPartBytes ||
            address.domain.size() > kMaximumDomainBytes ||
            address.localPart.size() + address.domain.size() + bracketsAndSign > kMaximumPathBytes) {
            refuseAddress();
        }
        return address;
    }

    /** Takes the comma behind an item, or the end of the group with a comma behind it. */
    void endItem() {
        if (token_.is(';') && inGroup_) {
            inGroup_ = false;
            advance();
        }
        if (token_.kind == Kind::End) {
            return;
        }
        if (!token_.is(',')) {
            refuseAddress();
        }
        beginItem();
    }

    /** Goes on behind the comma or the colon, which is the token read last. */
    void beginItem() {
        itemBegin_ = tokens_.position();
        advance();
    }

    AddressTokens tokens_;
    AddressCharacters characters_;
    AddressToken token_;
    std::size_t itemBegin_ = 0;
    std::size_t groupBegin_ = 0;
    bool inGroup_ = false;
    std::vector<Address> addresses_;
};

/** A header or a command must hold no CR, LF or NUL. */
std::size_t findForbidden(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3));
}

/** The end of the item: its comma or, where no token can be read, the next comma behind that place. */
std::size_t endOfItem(std::string_view text, std::size_t begin) {
    AddressTokens tokens(text.substr(begin));
    AddressToken token;
    const int error = platform::errorNumberOf([&] {
        do {
            token = tokens.next();
        } while (token.kind != Kind::End && !token.is(','));
    });
    if (error == 0 && token.is(',')) {
        return begin + tokens.position() - 1;
    }
    return std::min(text.find(',', begin + tokens.position()), text.size());
}

AddressFault withoutSpaces(std::string_view text, AddressFault fault) {
    constexpr std::string_view spaces = " \t";
    const std::string_view item = text.substr(fault.begin, fault.end - fault.begin);
    const std::size_t first = item.find_first_not_of(spaces);
    if (first != std::string_view::npos) {
        fault.end = fault.begin + item.find_last_not_of(spaces) + 1;
        fault.begin += first;
    }
    return fault;
}
} // namespace

std::vector<Address> parseAddressList(std::string_view text, AddressCharacters characters) {
    if (findForbidden(text) != std::string_view::npos) {
        throw platform::RuntimeError(errors::FieldHoldsLineEnd);
    }
    return AddressListParser(text, characters).parse();
}

std::optional<AddressFault> findAddressFault(std::string_view text, AddressCharacters characters) {
    if (const std::size_t at = findForbidden(text); at != std::string_view::npos) {
        const std::size_t comma = text.rfind(',', at);
        const std::size_t begin = comma == std::string_view::npos ? 0 : comma + 1;
        return withoutSpaces(text,
                             {errors::FieldHoldsLineEnd, begin, std::min(text.find(',', at), text.size())});
    }
    AddressListParser parser(text, characters);
    const int error = platform::errorNumberOf([&parser] { parser.parse(); });
    if (error == 0) {
        return std::nullopt;
    }
    const std::size_t begin = parser.itemBegin();
    return withoutSpaces(text, {error, begin, endOfItem(text, begin)});
}

std::vector<std::string> distinctMailboxes(const std::vector<Address>& recipients,
                                           const std::vector<Address>& copies) {
    std::vector<std::string> mailboxes;
    std::unordered_set<std::string> known;
    for (const auto* list : {&recipients, &copies}) {
        for (const Address& address : *list) {
            if (known.insert(address.localPart + '@' + platform::upperCase(address.domain)).second) {
                mailboxes.push_back(address.mailbox());
            }
        }
    }
    return mailboxes;
}

} // namespace smtplib
