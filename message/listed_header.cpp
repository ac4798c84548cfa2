#include "message/listed_header.h"

#include "platform/text.h"

#include <algorithm>

namespace {
/** Adds what there is room for. */
void addUpToTheMost(std::string& text, std::string_view more) {
    text += more.substr(0, ListedHeader::kMostBytes - std::min(text.size(), ListedHeader::kMostBytes));
}
} // namespace

void ListedHeader::add(std::string_view field, std::string_view value) {
    if (field.empty()) {
        if (last_ != nullptr) {
            addUpToTheMost(fields_.*last_, value);
        }
        return;
    }
    const std::string name = platform::upperCase(field.substr(0, field.find_last_not_of(" \t") + 1));
    last_ = nullptr;
    for (Known& known : known_) {
        if (!known.seen && name == known.name) {
            known.seen = true;
            last_ = known.text;
            addUpToTheMost(fields_.*last_, value);
        }
    }
}
