#include "standard/mailboxes.h"

#include "standard/encoded_words.h"

#include <algorithm>
#include <gmime/gmime.h>
#include <memory>

namespace standard {

namespace {
/** Bytes of a field that are looked at. */
constexpr std::size_t kLongestField = 64U << 10U;

struct Release {
    void operator()(void* object) const { g_object_unref(object); }
};

bool isSpecial(char character) {
    constexpr std::string_view specials = "()<>[]:;@\\,.\"";
    return specials.find(character) != std::string_view::npos;
}

/** The name as it stands before an address. */
std::string quotedWhereNeeded(std::string_view name) {
    std::string plain;
    std::string quoted = "\"";
    for (const char character : name) {
        const auto code = static_cast<unsigned char>(character);
        const char shown = code < ' ' || code == 0x7F ? ' ' : character;
        plain.push_back(shown);
        if (shown == '"' || shown == '\\') {
            quoted.push_back('\\');
        }
        quoted.push_back(shown);
    }
    return std::any_of(name.begin(), name.end(), isSpecial) ? quoted + "\"" : plain;
}

/** GMime's own options, once it has been started, which its parsers need. */
GMimeParserOptions* options() {
    static GMimeParserOptions* const known = [] {
        g_mime_init();
        return g_mime_parser_options_get_default();
    }();
    return known;
}

void add(InternetAddress* address, std::string& text, int depth) {
    constexpr int deepest = 10;
    if (INTERNET_ADDRESS_IS_GROUP(address) != 0) {
        InternetAddressList* const members =
            internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address));
        const int count = members == nullptr || depth > deepest ? 0 : internet_address_list_length(members);
        for (int index = 0; index < count; ++index) {
            add(internet_address_list_get_address(members, index), text, depth + 1);
        }
        return;
    }
    const char* const mailbox = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address));
    if (mailbox == nullptr || std::string_view(mailbox).find('@') == std::string_view::npos) {
        return;
    }
    const char* const name = internet_address_get_name(address);
    text += text.empty() ? "" : ", ";
    if (name == nullptr || *name == '\0') {
        text += mailbox;
    } else {
        text.append(quotedWhereNeeded(name)).append(" <").append(mailbox).append(">");
    }
}
} // namespace

std::string mailboxesText(std::string_view field) {
    // GMime loses encoded words of unknown charsets and characters that are cut between two words. It gets
    // each decoded, and encoded anew as one word.
    const std::string known = withWordsOfUtf8(field.substr(0, kLongestField));
    const std::unique_ptr<InternetAddressList, Release> list(
        internet_address_list_parse(options(), known.c_str()));
    std::string text;
    const int count = list ? internet_address_list_length(list.get()) : 0;
    for (int index = 0; index < count; ++index) {
        add(internet_address_list_get_address(list.get(), index), text, 0);
    }
    return text;
}

std::vector<std::string> messageIdsOf(std::string_view field) {
    constexpr std::size_t most = 200;
    constexpr std::size_t longest = 900;
    std::vector<std::string> ids;
    while (ids.size() < most) {
        const std::size_t opening = field.find('<');
        const std::size_t closing =
            field.find_first_of("<>", opening == std::string_view::npos ? 0 : opening + 1);
        if (opening == std::string_view::npos || closing == std::string_view::npos) {
            break;
        }
        const std::string_view id = field.substr(opening, closing + 1 - opening);
        const bool isPlain =
            std::all_of(id.begin(), id.end(), [](char letter) { return letter > ' ' && letter < 0x7F; });
        if (field[closing] == '>' && isPlain && id.size() > 2 && id.size() <= longest) {
            ids.emplace_back(id);
        }
        field.remove_prefix(field[closing] == '>' ? closing + 1 : closing);
    }
    return ids;
}

} // namespace standard
