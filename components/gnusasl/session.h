#pragma once

#include "components/sasl/mechanism.h"

#include <gsasl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace gnusasl {

struct FinishSession {
    void operator()(Gsasl_session* session) const noexcept { gsasl_finish(session); }
};

/** One exchange of GNU SASL as a client. It has its own copies of user name and password. */
using Session = std::unique_ptr<Gsasl_session, FinishSession>;

/** Begins an exchange; nullptr when the library does not have the mechanism. */
Session startSession(const char* mechanism, const sasl::Account& account);

/**
 * Hands a challenge on and returns the response; nothing when the library refuses the challenge.
 * \throws std::bad_alloc
 */
std::optional<std::string> respond(Gsasl_session& session, std::string_view challenge);

/** Whether the text can be used where a mechanism prepares it by SASLprep (RFC 4013) and leaves something. */
bool canBePrepared(const std::string& text);

} // namespace gnusasl
