#pragma once

// Recorded dialogues as text files, whatever the protocol.

#include <string>
#include <string_view>
#include <vector>

namespace support {

/** A line of such a file: "S: text" has the mark "S:". */
struct DialogueLine {
    std::string mark;
    std::string text;
};

/** Names of the dialogues in this folder of tests/data, without extension, in alphabetical order. */
std::vector<std::string> dialogueNames(const std::string& folder);

/** The lines of a dialogue, without comments and empty ones. \throws std::runtime_error when it is missing.
 */
std::vector<DialogueLine> readDialogue(const std::string& folder, const std::string& name);

/** The bytes that \r, \n, \t, \\ and \xHH stand for, and all others. */
std::string unescaped(std::string_view text);

/** Printable ASCII as it is, a backslash doubled, everything else as \xHH. */
std::string escaped(std::string_view bytes);

} // namespace support
