#include "components/poplib/message_identities.h"

#include <QByteArrayView>

#include <utility>

namespace POPLib {

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
    if (number >= 1 && index < entries_.size()) {
        entries_[index].identity.uniqueId = uniqueId;
    }
}

const MessageIdentity* MessageIdentities::of(std::int32_t number) const {
    const auto index = static_cast<std::size_t>(number) - 1;
    const bool known = number >= 1 && index < entries_.size() && entries_[index].known;
    return known ? &entries_[index].identity : nullptr;
}

std::vector<std::int32_t> MessageIdentities::indistinguishable(std::int32_t number, bool byUniqueId) const {
    std::vector<std::int32_t> numbers;
    const MessageIdentity* const wanted = of(number);
    const auto last = static_cast<std::int32_t>(entries_.size());
    for (std::int32_t other = 1; wanted != nullptr && other <= last; ++other) {
        const MessageIdentity* const identity = of(other);
        if (identity == nullptr) {
            continue;
        }
        const bool same =
            byUniqueId ? identity->uniqueId == wanted->uniqueId
                       : identity->size == wanted->size && identity->headerDigest == wanted->headerDigest;
        if (same) {
            numbers.push_back(other);
        }
    }
    return numbers;
}

void MessageIdentities::remove(std::int32_t number) {
    if (number >= 1 && static_cast<std::size_t>(number) <= entries_.size()) {
        entries_.erase(entries_.begin() + (number - 1));
    }
}

void HeaderDigest::add(std::string_view field, std::string_view value) {
    for (const std::string_view text : {field, std::string_view(":"), value, std::string_view("\n")}) {
        hash_.addData(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    }
}

std::string HeaderDigest::result() const {
    return hash_.result().toStdString();
}

} // namespace POPLib
