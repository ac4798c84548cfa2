#include "addresses/vcard.h"

#include "addresses/vcard_lines.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>

namespace addresses {

namespace {
constexpr std::size_t kMostProperties = 2'000;
constexpr std::size_t kMostAddressesOfACard = 20;
constexpr int kNotPreferred = 101;

/** The value as a person reads it. */
std::string plainText(std::string_view value) {
    return std::string(platform::trimmed(textOfValue(value)));
}

bool is(const CardProperty& property, std::string_view name, std::string_view value) {
    return property.name == name && platform::upperCase(platform::trimmed(property.value)) == value;
}

/** 1 for the most preferred one up to 100 (RFC 6350 section 5.3), then those that are not preferred. */
int rankOf(const CardProperty& property) {
    int rank = kNotPreferred;
    for (const CardProperty::Parameter& parameter : property.parameters) {
        const std::string& value = parameter.value;
        if (parameter.name == "PREF") {
            std::from_chars(value.data(), value.data() + value.size(), rank);
        } else if (parameter.name == "TYPE") {
            for (const std::string_view type : partsOfValue(value, ',')) {
                rank = platform::upperCase(type) == "PREF" ? 1 : rank;
            }
        }
    }
    return std::clamp(rank, 1, kNotPreferred);
}

/** The name in the order in which it is spoken: given name, additional names, family name. */
std::string spokenName(std::string_view value) {
    const std::vector<std::string_view> parts = partsOfValue(value, ';');
    std::string name;
    for (const std::size_t index : {1U, 2U, 0U}) {
        if (index >= parts.size()) {
            continue;
        }
        for (const std::string_view part : partsOfValue(parts[index], ',')) {
            const std::string word = plainText(part);
            name += (name.empty() || word.empty() ? "" : " ") + word;
        }
    }
    return name;
}

std::string addressOf(const CardProperty& property) {
    constexpr std::string_view scheme = "MAILTO:";
    std::string address = plainText(property.value);
    if (platform::upperCase(std::string_view(address).substr(0, scheme.size())) == scheme) {
        address.erase(0, scheme.size());
    }
    return address;
}

/** A card whose end has not come yet. */
class OpenCard {
  public:
    void add(const CardProperty& property) {
        ++properties_;
        if (property.name == "VERSION") {
            const std::string_view version = platform::trimmed(property.value);
            versionIsKnown_ = version == "2.1" || version == "3.0" || version == "4.0";
        } else if (property.name == "EMAIL") {
            addAddress(property);
        } else if (property.name == "FN") {
            offerName(0, plainText(property.value));
        } else if (property.name == "N") {
            offerName(1, spokenName(property.value));
        } else if (property.name == "ORG") {
            offerName(2, plainText(partsOfValue(property.value, ';').front()));
        } else if (property.name == "NICKNAME") {
            offerName(3, plainText(partsOfValue(property.value, ',').front()));
        }
    }

    /** The card, when it can be read. */
    std::optional<Card> close() {
        if (!versionIsKnown_ || properties_ > kMostProperties) {
            return std::nullopt;
        }
        Card card;
        const auto* const name =
            std::ranges::find_if(names_, [](const std::string& text) { return !text.empty(); });
        card.name = name == names_.end() ? std::string() : *name;
        std::ranges::stable_sort(addresses_, {}, &RankedAddress::first);
        for (RankedAddress& address : addresses_) {
            card.addresses.push_back(std::move(address.second));
        }
        return card;
    }

  private:
    using RankedAddress = std::pair<int, std::string>;

    void addAddress(const CardProperty& property) {
        std::string address = addressOf(property);
        if (!address.empty() && addresses_.size() < kMostAddressesOfACard) {
            addresses_.emplace_back(rankOf(property), std::move(address));
        }
    }

    /** Of several names of a kind the first one counts. */
    void offerName(std::size_t kind, std::string name) {
        if (names_.at(kind).empty()) {
            names_.at(kind) = std::move(name);
        }
    }

    std::size_t properties_ = 0;
    bool versionIsKnown_ = false;
    /** In the order in which they are wanted. */
    std::array<std::string, 4> names_;
    std::vector<RankedAddress> addresses_;
};

bool isBlank(std::string_view file) {
    return file.find_first_not_of(" \t\r\n") == std::string_view::npos;
}
} // namespace

CardsRead readCards(std::string_view file) {
    CardsRead read;
    std::optional<OpenCard> open;
    for (CardLines lines(file); !lines.atEnd();) {
        const CardProperty property = lines.next();
        if (is(property, "BEGIN", "VCARD")) {
            // A card that begins before the end of another: that end is missing.
            read.unreadable += open ? 1U : 0U;
            open.emplace();
        } else if (open && is(property, "END", "VCARD")) {
            if (std::optional<Card> card = open->close()) {
                read.cards.push_back(std::move(*card));
            } else {
                ++read.unreadable;
            }
            open.reset();
        } else if (open) {
            open->add(property);
        }
    }
    const bool noCardAtAll = read.cards.empty() && read.unreadable == 0 && !isBlank(file);
    read.unreadable += open || noCardAtAll ? 1U : 0U;
    return read;
}

} // namespace addresses
