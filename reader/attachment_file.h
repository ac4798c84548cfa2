#pragma once

/** The encoded content of the attachment that was found last. A relative name: in the current folder. */
inline constexpr const char* kEncodedAttachmentFile = "_tolk.tmp";
