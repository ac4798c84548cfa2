#pragma once

// What the sessions of both protocols make of a server's bytes, in the words of recorded dialogues.

#include "components/poplib/pop3_session.h"
#include "components/smtplib/smtp_session.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace support {

/** The event in one line, as dialogues have it; whatever is not printable ASCII as \xHH. */
std::string described(const poplib::Event& event);
std::string described(const smtplib::Event& event);

/** The same for what the POP3 component raises. */
std::string describedHeader(const std::string& field, const std::string& value);
std::string describedBody(std::int64_t bytesTransferred, const std::string& text);

/** Printable ASCII as it is, a backslash doubled, everything else as \xHH. */
std::string escaped(std::string_view bytes);

} // namespace support
