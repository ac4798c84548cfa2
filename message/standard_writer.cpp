#include "message/standard_writer.h"

#include "components/netcodelib/base64_encoder.h"
#include "components/smtplib/folded_field.h"
#include "components/smtplib/message_header.h"
#include "message/header_text.h"
#include "message/mime_part.h"
#include "message/outgoing_text.h"
#include "platform/drives.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace errors = platform::errors;
using smtplib::Address;
using smtplib::AddressCharacters;
using smtplib::Extensions;

namespace {
/** What has been composed of a letter before a server is asked. */
struct Composed {
    std::string text;
    LetterOrigin origin;
    /** Empty when the message has one part. */
    std::string boundary;
    /** The header of the part whose content is the data file; empty without a file. */
    std::string fileHeader;
};

std::string delimiter(std::string_view boundary) {
    return "\r\n--" + std::string(boundary) + "\r\n";
}

std::string closingDelimiter(std::string_view boundary) {
    return "\r\n--" + std::string(boundary) + "--\r\n";
}

/** The message that is handed on, as its part. */
struct OriginalPart {
    std::string header;
    std::string bytes;
    bool eightBit = false;
};

/**
 * As message/rfc822 where its lines can go out as they are; the encodings of that type change no byte (RFC
 * 2046 section 5.2.1). Otherwise as a file, so that it arrives as it was received.
 */
OriginalPart originalPart(const LetterOrigin& origin, bool eightBitOffered) {
    OriginalPart part;
    part.bytes.reserve(origin.original->header.size() + origin.original->body.size() + 2);
    part.bytes.append(origin.original->header).append("\r\n").append(origin.original->body);
    const ByteTraits traits = traitsOf(part.bytes);
    if (traits.readyLines && (eightBitOffered || !traits.eightBit)) {
        part.eightBit = traits.eightBit;
        part.header = filePartHeader("message/rfc822",
                                     traits.eightBit ? TransferForm::EightBit : TransferForm::SevenBit,
                                     origin.originalName);
        return part;
    }
    part.header = filePartHeader("application/octet-stream", TransferForm::Base64, origin.originalName);
    std::string encoded;
    netcodelib::Base64Encoder encoder;
    encoder.append(part.bytes, encoded);
    encoder.finish(encoded);
    part.bytes = std::move(encoded);
    return part;
}

/** Message-IDs of other people's messages. The first and the last ones tell most about a long conversation.
 */
std::string idField(std::string_view nameAndColon, const std::vector<std::string>& ids) {
    constexpr std::size_t mostIds = 40;
    constexpr std::ptrdiff_t firstIds = 5;
    std::vector<std::string> good;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(good),
                 [](const std::string& id) { return smtplib::isMessageId(id); });
    if (good.size() > mostIds) {
        good.erase(good.begin() + firstIds, good.end() - (static_cast<std::ptrdiff_t>(mostIds) - firstIds));
    }
    if (good.empty()) {
        return {};
    }
    smtplib::FoldedField field(nameAndColon);
    for (const std::string& id : good) {
        field.add(' ' + id);
    }
    return field.lines();
}

/** The header lines behind the addresses, the subject, the date and the Message-ID, and the body. */
struct Content {
    std::string headerLines;
    std::string body;
};

Content contentOf(const Composed& composed, bool eightBitOffered) {
    Content content;
    content.headerLines = idField("In-Reply-To:", {composed.origin.inReplyTo}) +
                          idField("References:", composed.origin.references);
    content.headerLines += "MIME-Version: 1.0\r\n";
    OutgoingText text = outgoingText(composed.text, eightBitOffered);
    if (composed.boundary.empty()) {
        content.headerLines += textPartHeader(text);
        content.body = std::move(text.bytes);
        return content;
    }
    const bool hasOriginal = composed.origin.original != nullptr;
    const OriginalPart original =
        hasOriginal ? originalPart(composed.origin, eightBitOffered) : OriginalPart();
    content.headerLines +=
        multipartHeader(composed.boundary, text.form == TransferForm::EightBit || original.eightBit);
    // The line end before the first delimiter belongs to it, and the empty line ends the header.
    content.body = delimiter(composed.boundary).substr(2) + textPartHeader(text) + "\r\n" + text.bytes;
    if (hasOriginal) {
        content.body += delimiter(composed.boundary) + original.header + "\r\n" + original.bytes;
    }
    content.body += composed.fileHeader.empty() ? closingDelimiter(composed.boundary)
                                                : delimiter(composed.boundary) + composed.fileHeader + "\r\n";
    return content;
}

/** The addresses with names that need no more encoding. */
std::vector<Address> addressesOf(const std::string& typed, AddressCharacters characters) {
    std::vector<Address> addresses = smtplib::parseAddressList(typed, characters);
    for (Address& address : addresses) {
        const std::string name = headerText(platform::fromBytes(address.displayName));
        address.nameWasQuoted = address.nameWasQuoted && name == address.displayName;
        address.displayName = name;
    }
    return addresses;
}

smtplib::PreparedMessage preparedFrom(const smtplib::HeaderFields& fields) {
    smtplib::PreparedMessage prepared;
    prepared.sender = fields.sender.mailbox();
    prepared.mailboxes = smtplib::distinctMailboxes(fields.recipients, fields.copies);
    if (prepared.mailboxes.empty()) {
        throw platform::RuntimeError(errors::NoRecipient);
    }
    prepared.header = smtplib::messageHeader(fields) + "\r\n";
    prepared.smtpUtf8 = traitsOf(prepared.header).eightBit;
    return prepared;
}

smtplib::HeaderFields fieldsOf(const smtplib::Message& message, AddressCharacters characters,
                               const QDateTime& now) {
    if (message.subject.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
        throw platform::RuntimeError(errors::FieldHoldsLineEnd);
    }
    const std::vector<Address> senders = addressesOf(message.sender, characters);
    if (senders.size() != 1) {
        throw platform::RuntimeError(errors::BadAddress);
    }
    smtplib::HeaderFields fields;
    fields.sender = senders.front();
    fields.recipients = addressesOf(message.recipients, characters);
    fields.copies = addressesOf(message.copies, characters);
    fields.subject = headerText(platform::fromBytes(message.subject));
    fields.date = now;
    fields.messageId = message.messageId;
    return fields;
}

smtplib::PreparedMessage messageFor(const Composed& composed, const smtplib::Message& message,
                                    const Extensions& offered, const QDateTime& now) {
    const auto characters =
        offered.smtpUtf8 && offered.eightBit ? AddressCharacters::Any : AddressCharacters::AnyInDomain;
    smtplib::HeaderFields fields = fieldsOf(message, characters, now);
    Content content = contentOf(composed, offered.eightBit);
    fields.additionalLines = std::move(content.headerLines);
    smtplib::PreparedMessage prepared = preparedFrom(fields);
    prepared.body = std::move(content.body);
    return prepared;
}
} // namespace

std::string StandardWriter::bytesOf(const QString& typed) const {
    return platform::toBytes(platform::withoutHalfPairs(typed));
}

ComposedMessage StandardWriter::compose(const Letter& letter, const EncodeAttachment& encode) const {
    auto composed = std::make_shared<Composed>(Composed{letter.text, letter.origin, {}, {}});
    const ReceivedMessage* const original = letter.origin.original.get();
    const bool hasFile = !letter.attachment.isEmpty();
    if (hasFile || original != nullptr) {
        composed->boundary = newBoundary({letter.text, original == nullptr ? "" : original->header,
                                          original == nullptr ? "" : original->body});
    }
    ComposedMessage message;
    if (hasFile) {
        message.DataFile = encode(letter.attachment, closingDelimiter(composed->boundary));
        const FileType type = fileTypeOf(platform::nativePath(letter.attachment));
        composed->fileHeader = filePartHeader(type.type, TransferForm::Base64,
                                              attachmentFileName(letter.attachment), type.charset);
    }
    message.form = [composed](const smtplib::Message& fields, const Extensions& offered,
                              const QDateTime& now) { return messageFor(*composed, fields, offered, now); };
    return message;
}

void StandardWriter::check(const smtplib::Message& fields) const {
    preparedFrom(fieldsOf(fields, AddressCharacters::Any, QDateTime::currentDateTime()));
}

std::optional<smtplib::AddressFault> StandardWriter::findFault(std::string_view addresses, int error) const {
    const auto characters =
        error == errors::AddressBeyondAscii ? AddressCharacters::AnyInDomain : AddressCharacters::Any;
    const auto fault = smtplib::findAddressFault(addresses, characters);
    return fault && fault->error == error ? fault : std::nullopt;
}
