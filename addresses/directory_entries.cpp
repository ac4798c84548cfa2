#include "addresses/directory_entries.h"

#include "addresses/sendable_address.h"

#include <algorithm>
#include <string>
#include <utility>

namespace addresses {

namespace {
std::string nameOf(const directory::Entry& entry) {
    for (const std::string& name :
         {entry.displayName, entry.commonName, entry.givenName + ' ' + entry.surname}) {
        if (std::string shown = nameForShowing(name); !shown.empty()) {
            return shown;
        }
    }
    return {};
}
} // namespace

FoundAddresses foundIn(const std::vector<directory::Entry>& entries) {
    FoundAddresses outcome;
    for (const directory::Entry& entry : entries) {
        const std::string name = nameOf(entry);
        std::size_t ofThisEntry = 0;
        for (const std::string& address : entry.mail) {
            FoundAddress found{name, address, "Directory Server"};
            if (ofThisEntry == mostOfOneEntry || !canBeSentTo(address) ||
                std::ranges::find(outcome.found, found) != outcome.found.end()) {
                continue;
            }
            if (outcome.found.size() == mostFound) {
                outcome.more = true;
                return outcome;
            }
            outcome.found.push_back(std::move(found));
            ++ofThisEntry;
        }
    }
    return outcome;
}

} // namespace addresses
