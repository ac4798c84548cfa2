#include "message/listed_header.h"

#include "platform/text.h"

#include <algorithm>

namespace {
/** Adds what there is room for, in whole characters: half of one would make all of the text no UTF-8. */
void addUpToTheMost(std::string& text, std::string_view more) {
    const std::size_t room = ListedHeader::kMostBytes - std::min(text.size(), ListedHeader::kMostBytes);
    text += more.substr(0, platform::wholeCharacters(more, room));
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
