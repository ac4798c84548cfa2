#pragma once

#include "mailserver/accounts.h"
#include "mailserver/sasl.h"

#include <memory>
#include <string>
#include <string_view>

namespace mailserver {

/** True when the password cannot be read off what the client sends: all but PLAIN and LOGIN. */
bool hidesPassword(std::string_view mechanism);

/**
 * Begins a log-on by SCRAM-SHA-256, SCRAM-SHA-1, CRAM-MD5, PLAIN or LOGIN, in capitals; nothing for any other
 * mechanism. The accounts are to outlive it.
 */
std::unique_ptr<SaslMechanism> makeMechanism(const std::string& name, const Accounts& accounts,
                                             const SaslSettings& settings);

} // namespace mailserver
