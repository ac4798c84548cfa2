// Whatever a directory sends to a search, it ends, and what is offered of it is short text without control
// characters, and addresses that can be sent to. Whatever is typed becomes a filter that is sent.
//
// Input: bytes that come in one piece, and bytes from the server.

#include "addresses/directory_entries.h"
#include "addresses/directory_query.h"
#include "addresses/sendable_address.h"
#include "components/directory/conversation.h"
#include "platform/text.h"
#include "tests/fuzz/fuzz_input.h"

#include <QString>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

extern "C" directory::Conversation* brindlewakeMakeConversation();

/** The library never frees the request that a malformed message belongs to, a few kilobytes. */
extern "C" const char* __lsan_default_suppressions() {
    return "leak:ber_memalloc_x\nleak:ber_memcalloc_x\n";
}

namespace {
std::unique_ptr<directory::Conversation> conversationAfterASearch(std::string_view typed) {
    std::unique_ptr<directory::Conversation> conversation(brindlewakeMakeConversation());
    fuzz::require(conversation != nullptr, "there is a conversation");
    const std::string filter = addresses::directoryFilter(typed);
    conversation->search({"dc=example,dc=org", false, filter.empty() ? "(mail=*)" : filter, 51, 10});
    fuzz::require(!conversation->takeBytesToSend().empty(), "every filter is one");
    return conversation;
}

void checkText(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    fuzz::require(shown.toStdString() == text, "all text is UTF-8");
    fuzz::require(std::none_of(shown.begin(), shown.end(), platform::isControlCharacter),
                  "no text has control characters");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t piece = 1 + input.below(64);
    std::string_view bytes = input.rest();
    const auto conversation = conversationAfterASearch(bytes);
    std::vector<directory::Entry> entries;
    bool hasEnded = false;
    while (!bytes.empty() && !hasEnded) {
        conversation->receive(bytes.substr(0, piece));
        bytes.remove_prefix(std::min(piece, bytes.size()));
        while (const auto message = hasEnded ? std::nullopt : conversation->next()) {
            hasEnded = message->kind != directory::Message::Kind::Entry;
            entries.push_back(message->entry);
        }
    }
    const addresses::FoundAddresses outcome = addresses::foundIn(entries);
    fuzz::require(outcome.found.size() <= addresses::mostFound, "no more is found than can be shown");
    for (const addresses::FoundAddress& found : outcome.found) {
        checkText(found.name);
        checkText(found.address);
        fuzz::require(addresses::canBeSentTo(found.address), "what is found can be sent to");
    }
    return 0;
}
