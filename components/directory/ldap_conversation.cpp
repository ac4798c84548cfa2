// OpenLDAP's library does the protocol. It is loaded at the first search, with all that it needs.

#include "components/directory/conversation.h"
#include "components/directory/ldap_gate.h"
#include "components/directory/ldap_stream.h"

#include <array>
#include <ldap.h>
#include <memory>
#include <openldap.h>
#include <utility>

namespace directory {

namespace {
struct Unbind {
    void operator()(LDAP* handle) const { ldap_unbind_ext(handle, nullptr, nullptr); }
};

struct FreeMessage {
    void operator()(LDAPMessage* message) const { ldap_msgfree(message); }
};

struct FreeValues {
    void operator()(berval** values) const { ldap_value_free_len(values); }
};

struct FreeText {
    void operator()(char* text) const { ldap_memfree(text); }
};

/** The values of an attribute, as many and as long as they are. */
std::vector<std::string_view> valuesOf(LDAP* handle, LDAPMessage* entry, const char* attribute,
                                       std::unique_ptr<berval*, FreeValues>& owner) {
    owner.reset(ldap_get_values_len(handle, entry, attribute));
    std::vector<std::string_view> values;
    for (berval** value = owner.get(); value != nullptr && *value != nullptr; ++value) {
        values.emplace_back((*value)->bv_val, (*value)->bv_len);
    }
    return values;
}

std::string nameIn(LDAP* handle, LDAPMessage* entry, const char* attribute) {
    std::unique_ptr<berval*, FreeValues> owner;
    const auto values = valuesOf(handle, entry, attribute, owner);
    return values.empty() ? std::string() : std::string(values.front().substr(0, Entry::kMostNameBytes));
}

Entry entryIn(LDAP* handle, LDAPMessage* message) {
    Entry entry;
    entry.commonName = nameIn(handle, message, "cn");
    entry.displayName = nameIn(handle, message, "displayName");
    entry.givenName = nameIn(handle, message, "givenName");
    entry.surname = nameIn(handle, message, "sn");
    std::unique_ptr<berval*, FreeValues> owner;
    for (const std::string_view address : valuesOf(handle, message, "mail", owner)) {
        if (entry.mail.size() < Entry::kMostMail && address.size() <= Entry::kMostMailBytes) {
            entry.mail.emplace_back(address);
        }
    }
    return entry;
}

class LdapConversation final : public Conversation {
  public:
    LdapConversation() {
        LDAP* made = nullptr;
        // The library wants a descriptor, and neither reads nor writes this one.
        if (ldap_init_fd(stream_.descriptor(), LDAP_PROTO_EXT, nullptr, &made) != LDAP_SUCCESS) {
            return;
        }
        handle_.reset(made);
        Sockbuf* buffer = nullptr;
        isBroken_ = ldap_get_option(made, LDAP_OPT_SOCKBUF, &buffer) != LDAP_OPT_SUCCESS ||
                    !stream_.layBelow(buffer) || !limitMessages(buffer) || !setOptions();
    }

    /** False where the library has refused to begin. */
    bool isReady() const { return handle_ && !isBroken_; }

    void startTls() override {
        note(ldap_extended_operation(handle_.get(), LDAP_EXOP_START_TLS, nullptr, nullptr, nullptr, &asked_));
    }

    void logOn(const std::string& name, const std::string& password) override {
        std::string copy = password;
        berval secret{copy.size(), copy.data()};
        note(ldap_sasl_bind(handle_.get(), name.c_str(), LDAP_SASL_SIMPLE, &secret, nullptr, nullptr,
                            &asked_));
        copy.assign(copy.size(), '\0');
    }

    void search(const SearchRequest& request) override {
        std::array<std::string, 5> names = {"cn", "displayName", "givenName", "sn", "mail"};
        std::array<char*, 6> attributes = {names[0].data(), names[1].data(), names[2].data(),
                                           names[3].data(), names[4].data(), nullptr};
        timeval limit{request.seconds, 0};
        note(ldap_search_ext(handle_.get(), request.base.c_str(),
                             request.baseOnly ? LDAP_SCOPE_BASE : LDAP_SCOPE_SUBTREE, request.filter.c_str(),
                             attributes.data(), 0, nullptr, nullptr, request.seconds > 0 ? &limit : nullptr,
                             request.entries, &asked_));
    }

    std::string takeBytesToSend() override { return stream_.takeWritten(); }

    void receive(std::string_view bytes) override { stream_.giveToRead(gate_.pass(bytes)); }

    std::optional<Message> next() override {
        while (!isBroken_) {
            timeval atOnce{};
            LDAPMessage* raw = nullptr;
            const std::size_t unread = stream_.unread();
            const int type = ldap_result(handle_.get(), LDAP_RES_ANY, LDAP_MSG_ONE, &atOnce, &raw);
            const std::unique_ptr<LDAPMessage, FreeMessage> message(raw);
            if (type == 0 && stream_.unread() < unread && stream_.unread() > 0) {
                // It has passed something over, and its time was up then.
                continue;
            }
            if (type == 0 && !gate_.hasEnded()) {
                return std::nullopt;
            }
            if (type <= 0) {
                break;
            }
            if (ldap_msgid(raw) == asked_ && type == LDAP_RES_SEARCH_ENTRY) {
                return Message{Message::Kind::Entry, entryIn(handle_.get(), raw)};
            }
            // References to other servers and whatever a later version of the protocol has are passed over.
            if (ldap_msgid(raw) == asked_ && type != LDAP_RES_SEARCH_REFERENCE &&
                type != LDAP_RES_INTERMEDIATE) {
                return resultIn(raw);
            }
        }
        isBroken_ = true;
        return Message{};
    }

    bool hasUnreadBytes() const override {
        return stream_.unread() > 0 || gate_.holdsBack() || gate_.hasEnded();
    }

  private:
    static bool limitMessages(Sockbuf* buffer) {
        ber_len_t most = kMostMessageBytes;
        return ber_sockbuf_ctrl(buffer, LBER_SB_OPT_SET_MAX_INCOMING, &most) == 1;
    }

    /** Says explicitly what a settings file of the library could say otherwise. */
    bool setOptions() {
        const int version = LDAP_VERSION3;
        const int never = LDAP_DEREF_NEVER;
        return ldap_set_option(handle_.get(), LDAP_OPT_PROTOCOL_VERSION, &version) == LDAP_OPT_SUCCESS &&
               ldap_set_option(handle_.get(), LDAP_OPT_DEREF, &never) == LDAP_OPT_SUCCESS &&
               ldap_set_option(handle_.get(), LDAP_OPT_REFERRALS, LDAP_OPT_OFF) == LDAP_OPT_SUCCESS &&
               ldap_set_option(handle_.get(), LDAP_OPT_RESTART, LDAP_OPT_OFF) == LDAP_OPT_SUCCESS;
    }

    /** What the library has made of a request; one that it refuses is never sent, so nothing can follow. */
    void note(int made) { isBroken_ = isBroken_ || made != LDAP_SUCCESS; }

    Message resultIn(LDAPMessage* raw) {
        Message message;
        char* said = nullptr;
        if (ldap_parse_result(handle_.get(), raw, &message.code, nullptr, &said, nullptr, nullptr, 0) !=
            LDAP_SUCCESS) {
            isBroken_ = true;
            return message;
        }
        const std::unique_ptr<char, FreeText> owner(said);
        message.kind = Message::Kind::Result;
        message.said = said == nullptr ? "" : std::string(said).substr(0, Entry::kMostNameBytes);
        return message;
    }

    LdapGate gate_;
    LdapStream stream_;
    std::unique_ptr<LDAP, Unbind> handle_;
    /** The number of what was asked last. */
    int asked_ = -1;
    bool isBroken_ = true;
};
} // namespace

} // namespace directory

extern "C" __attribute__((visibility("default"))) directory::Conversation* brindlewakeMakeConversation() {
    auto conversation = std::make_unique<directory::LdapConversation>();
    return conversation->isReady() ? conversation.release() : nullptr;
}
