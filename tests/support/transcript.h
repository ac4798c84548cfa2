#pragma once

// Recorded POP3 dialogues as data; the format is described in tests/data/README.md.

#include "components/poplib/commands.h"
#include "components/poplib/pop3_session.h"
#include "tests/support/scripted_server.h"

#include <string>
#include <vector>

namespace support {

/** One dialogue, and what is to come of it. */
struct Transcript {
    enum class Speaker { Server, Client };

    struct Turn {
        Speaker speaker = Speaker::Server;
        /** The server's bytes with their line ends; the client's line without. */
        std::string text;
    };

    std::vector<Turn> turns;
    /** What a session makes of it, in the words of described(). */
    std::vector<std::string> events;
    /** The run-time error that ends it for the program; 0 when none does. */
    int error = 0;

    std::vector<std::string> clientLines() const;
    std::string serverBytes() const;
    /** Those of the events that the POP3 component raises: header and body lines. */
    std::vector<std::string> contentEvents() const;
};

/** Names of the dialogues in tests/data/pop3, without folder and extension, in alphabetical order. */
std::vector<std::string> pop3TranscriptNames();

Transcript readPop3Transcript(const std::string& name);

/** The client's lines as commands; a RETR after a TOP for the same message has that one's limit. */
std::vector<POPLib::Command> commandsOf(const Transcript& transcript);

/** A server that says the server's lines, waiting for a line wherever the client has one. */
Script scriptOf(const Transcript& transcript, std::size_t pieceOctets = 0);

/** The event in one line, as dialogues have it; whatever is not printable ASCII as \xHH. */
std::string described(const POPLib::Event& event);

/** The same for what the POP3 component raises. */
std::string describedHeader(const std::string& field, const std::string& value);
std::string describedBody(std::int64_t bytesTransferred, const std::string& text);

} // namespace support
