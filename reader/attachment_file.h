#pragma once

#include <string_view>

/** The encoded content of the attachment that was found last. A relative name: in the current folder. */
inline constexpr const char* kEncodedAttachmentFile = "_tolk.tmp";

/**
 * The attachment writer: puts an attachment part, without its header lines, into that file. The transfer
 * encoding goes with its line: whatever it says, the file is decoded as base64. \throws RuntimeError 75, 61
 * or 57 as a file does that cannot be written.
 */
void writeAttachment(std::string_view part);
