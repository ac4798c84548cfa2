#pragma once

#include <string_view>

/**
 * The attachment writer: puts an attachment part, without its header lines, into the file of encoded
 * content, email::kEncodedAttachmentFileName. The transfer encoding goes with its line: whatever it says, the
 * file is decoded as base64. \throws RuntimeError 75, 61
 * or 57 as a file does that cannot be written.
 */
void writeAttachment(std::string_view part);
