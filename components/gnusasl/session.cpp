#include "components/gnusasl/session.h"

#include <cstring>
#include <new>

namespace gnusasl {

namespace {
/** Text of the library's, which is overwritten when it is given back, since it may hold a password. */
struct OverwriteAndFree {
    void operator()(char* text) const noexcept {
        explicit_bzero(text, size);
        gsasl_free(text);
    }

    std::size_t size = 0;
};

using SecretText = std::unique_ptr<char, OverwriteAndFree>;

/** The library's state, which all sessions share; nullptr when there is no memory. */
Gsasl* library() {
    // It is never freed: a session that answers beside the windows may outlive the end of main().
    static Gsasl* const state = [] {
        Gsasl* made = nullptr;
        return gsasl_init(&made) == GSASL_OK ? made : nullptr;
    }();
    return state;
}
} // namespace

Session startSession(const char* mechanism, const sasl::Account& account) {
    Gsasl* const state = library();
    Gsasl_session* started = nullptr;
    if (state == nullptr || gsasl_client_start(state, mechanism, &started) != GSASL_OK) {
        return nullptr;
    }
    Session session(started);
    const bool known = gsasl_property_set(started, GSASL_AUTHID, account.user.c_str()) == GSASL_OK &&
                       gsasl_property_set(started, GSASL_PASSWORD, account.password.c_str()) == GSASL_OK;
    return known ? std::move(session) : nullptr;
}

std::optional<std::string> respond(Gsasl_session& session, std::string_view challenge) {
    char* made = nullptr;
    std::size_t size = 0;
    const int result = gsasl_step(&session, challenge.data(), challenge.size(), &made, &size);
    if (result == GSASL_MALLOC_ERROR) {
        throw std::bad_alloc();
    }
    if (result != GSASL_OK && result != GSASL_NEEDS_MORE) {
        return std::nullopt;
    }
    const SecretText response(made, OverwriteAndFree{size});
    return made == nullptr ? std::string() : std::string(made, size);
}

bool canBePrepared(const std::string& text) {
    char* made = nullptr;
    if (gsasl_saslprep(text.c_str(), GSASL_ALLOW_UNASSIGNED, &made, nullptr) != GSASL_OK) {
        return false;
    }
    const SecretText prepared(made, OverwriteAndFree{std::strlen(made)});
    return *made != '\0';
}

} // namespace gnusasl
