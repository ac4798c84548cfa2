#pragma once

// Recorded dialogues of both protocols as data; their format is described in tests/data/README.md and
// tests/data/smtp/README.md.

#include "tests/support/scripted_server.h"

#include <cstddef>
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
    /** The message has bytes beyond ASCII. */
    bool eightBit = false;
    /** It depends on what comes in one piece, so that it cannot be played in smaller ones. */
    bool atOnce = false;
    /** The run-time error that ends it for the program; 0 when none does. */
    int error = 0;

    std::vector<std::string> clientLines() const;
    std::string serverBytes() const;
};

/**
 * Names of the dialogues in this folder of tests/data, "pop3" or "smtp", without extension, in alphabetical
 * order.
 */
std::vector<std::string> transcriptNames(const std::string& folder);

/** \throws std::runtime_error when it is missing, std::invalid_argument when a line cannot be understood. */
Transcript readTranscript(const std::string& folder, const std::string& name);

/** The name with an underscore for whatever a test's name cannot have. */
std::string testNameOf(const std::string& transcriptName);

/** The same, with the size of the pieces; 0 and npos stand for one piece. */
std::string testNameOf(const std::string& transcriptName, std::size_t pieceBytes);

/**
 * Says the server's lines in pieces of so many bytes, 0 for all at once, and hears a line wherever the
 * client has one. Behind DATA it hears lines up to the final dot, whatever they are: the program writes a
 * header of its own.
 */
void play(const Transcript& transcript, Peer& peer, std::size_t pieceBytes);

} // namespace support
