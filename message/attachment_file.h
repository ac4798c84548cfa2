#pragma once

#include <string_view>

/**
 * The attachment writer: puts an attachment part, without its header lines, into the file of encoded content,
 * email::kEncodedAttachmentFileName. The line of the transfer encoding is dropped too: whatever it says, the
 * file is decoded as base64.
 * \throws RuntimeError 75, 61 or 57 when the file cannot be written.
 */
void writeAttachment(std::string_view part);
