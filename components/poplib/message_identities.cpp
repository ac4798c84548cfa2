#include "components/poplib/message_identities.h"

#include <algorithm>
#include <utility>

namespace poplib {

void MessageIdentities::remember(std::int32_t number, MessageIdentity identity) {
    if (number < 1) {
        return;
    }
    const auto index = static_cast<std::size_t>(number) - 1;
    if (index >= entries_.size()) {
        entries_.resize(index + 1);
    }
    entries_[index] = {true, std::move(identity)};
}

void MessageIdentities::setUniqueId(std::int32_t number, std::string_view uniqueId) {
    const auto index = static_cast<std::size_t>(number) - 1;
    if (number >= 1 && index < entries_.size() && uniqueId != std::to_string(number)) {
        entries_[index].identity.uniqueId = uniqueId;
    }
}

const MessageIdentity* MessageIdentities::of(std::int32_t number) const {
    const auto index = static_cast<std::size_t>(number) - 1;
    const bool known = number >= 1 && index < entries_.size() && entries_[index].known;
    return known ? &entries_[index].identity : nullptr;
}

std::vector<std::int32_t> MessageIdentities::alike(std::int32_t number) const {
    std::vector<std::int32_t> numbers;
    const MessageIdentity* const wanted = of(number);
    const auto last = static_cast<std::int32_t>(entries_.size());
    for (std::int32_t other = 1; wanted != nullptr && other <= last; ++other) {
        const MessageIdentity* const identity = of(other);
        if (identity != nullptr && identity->size == wanted->size && identity->digest == wanted->digest) {
            numbers.push_back(other);
        }
    }
    return numbers;
}

bool MessageIdentities::uniqueIdTells(std::int32_t number) const {
    const MessageIdentity* const wanted = of(number);
    if (wanted == nullptr || wanted->uniqueId.empty()) {
        return false;
    }
    return std::count_if(entries_.begin(), entries_.end(), [wanted](const Entry& entry) {
               return entry.known && entry.identity.uniqueId == wanted->uniqueId;
           }) == 1;
}

void MessageIdentities::remove(std::int32_t number) {
    if (number >= 1 && static_cast<std::size_t>(number) <= entries_.size()) {
        entries_.erase(entries_.begin() + (number - 1));
    }
}

} // namespace poplib
