#pragma once

// Recorded SMTP dialogues as data; the format is described in tests/data/smtp/README.md.

#include "components/smtplib/smtp_session.h"
#include "tests/support/recorded_exchange.h"
#include "tests/support/scripted_server.h"

#include <string>
#include <vector>

namespace support {

/** One dialogue, and what is to come of it. */
struct SmtpTranscript {
    std::vector<Turn> turns;
    /** What a session makes of it, in the words of described(). */
    std::vector<std::string> events;
    /** The message has octets beyond ASCII. */
    bool eightBit = false;
    /** It depends on what comes in one piece, so that it cannot be played in smaller ones. */
    bool atOnce = false;
    /** The run-time error that ends it for the program; 0 when none does. */
    int error = 0;
};

/** Names of the dialogues in tests/data/smtp, without folder and extension, in alphabetical order. */
std::vector<std::string> smtpTranscriptNames();

SmtpTranscript readSmtpTranscript(const std::string& name);

/** Says the server's lines in pieces of so many octets, and hears a command, or a whole message, in between.
 */
void play(const SmtpTranscript& transcript, Peer& peer, std::size_t pieceOctets);

/** The event in one line, as dialogues have it; whatever is not printable ASCII as \xHH. */
std::string described(const SMTPLib::Event& event);

} // namespace support
