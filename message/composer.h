#pragma once

#include "components/smtplib/message.h"
#include "platform/private_file.h"

#include <QString>

#include <functional>
#include <string>
#include <string_view>

/** A file that was encoded for sending. */
struct EncodedFile {
    /** Empty when there is none. */
    QString path;
    /** The file itself, open, even when the path leads to another file by now. */
    platform::HeldFile file;
};

/** What one send hands to the SMTP client. */
struct ComposedMessage {
    /** Header lines added to the message's own, each ended by CR LF; empty without an attachment. */
    std::string ExtraHeaders;
    std::string MessageBody;
    /** The file whose bytes follow the body; empty without an attachment. */
    EncodedFile DataFile;
    /** Makes the message's header and its body in place of the two above; empty for the SMTP client's own
     * way. */
    smtplib::MessageForm form = {};
};

/**
 * Encodes the attachment (a drive path, as typed) into the encoder's own target file, ends that file with the
 * given closing line, and returns the file.
 */
using EncodeAttachment = std::function<EncodedFile(const QString& attachment, std::string_view closingLine)>;

/** The fixed boundary. It begins with two hyphens of its own, so delimiter lines begin with four. */
inline constexpr std::string_view MimeBoundary = "--*******Brindlewake************";

/** The file's name without drive and directories; only a backslash separates, never a slash. */
QString attachmentFileName(QString path);

/**
 * Composes the outgoing message: the typed text alone, or, with an attachment, a text part and a base64 part.
 * The text's lines end in CR LF. A text that itself holds the boundary line is sent as it stands.
 *
 * The empty line after the first delimiter is intended: it makes the text part's Content-Type line the first
 * line of that part's body. \throws RuntimeError 52 when the attachment's name holds a quote or a line end,
 * and whatever encode throws.
 */
ComposedMessage Compose(std::string_view text, const QString& attachment, const EncodeAttachment& encode);
