#pragma once

#include "components/protocol/command_text.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace poplib {

enum class CommandKind {
    Capa,
    Stls,
    Utf8,
    User,
    Pass,
    Apop,
    Auth,
    AuthResponse,
    Stat,
    List,
    ListAll,
    Uidl,
    Top,
    Retr,
    Dele,
    Quit
};

/** One POP3 command (RFC 1939). */
struct Command : protocol::CommandText {
    CommandKind kind = CommandKind::Quit;
    /** The number of the message that the command names; 0 for a command that names none. */
    std::int32_t messageNumber = 0;
    /** TOP and RETR: body lines to report at the most; 0 means all. */
    std::int32_t bodyLineLimit = 0;
};

/** Longest command line, in bytes, line end included (RFC 2449 section 4). */
inline constexpr std::size_t kMaximumCommandBytes = 255;

/** CAPA asks what the server can do (RFC 2449 section 5). */
Command capaCommand();
/** STLS asks the server to begin encryption (RFC 2595 section 4). */
Command stlsCommand();
/** UTF8 asks for header lines as they are, beyond ASCII too (RFC 6856 section 2). */
Command utf8Command();

/**
 * True when the text can stand as the argument of USER or PASS: no CR, LF or NUL, and short enough for one
 * command line. Spaces are part of a password (RFC 1939 section 7).
 */
bool canBeSentAsArgument(std::string_view argument) noexcept;

Command userCommand(std::string_view name);
Command passCommand(std::string_view password);
/** APOP with the name and a digest that proves the password (RFC 1939 section 7). */
Command apopCommand(std::string_view name, std::string_view digest);
/**
 * AUTH with the mechanism's name and its initial response in base64, which is empty for a mechanism without
 * one (RFC 5034 section 4).
 */
Command authCommand(std::string_view mechanism, std::string_view initialResponse);
/** The response to a challenge of AUTH, in base64; "*" cancels the log-on (RFC 5034 section 4). */
Command authResponseCommand(std::string_view response);
Command statCommand();
Command listCommand(std::int32_t messageNumber);
/** LIST without a number asks for the sizes of all messages. */
Command listAllCommand();
/** UIDL asks for the unique-ids of all messages. */
Command uidlCommand();
/** TOP asks for the header and the first body lines. */
Command topCommand(std::int32_t messageNumber, std::int32_t bodyLineLimit);
/** RETR brings the whole message; with a limit, only its first body lines are reported. */
Command retrCommand(std::int32_t messageNumber, std::int32_t bodyLineLimit = 0);
Command deleCommand(std::int32_t messageNumber);
Command quitCommand();

} // namespace poplib
