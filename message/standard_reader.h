#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/** How the bytes of a part are written in the message (RFC 2045 section 6). */
enum class TransferEncoding { None, Base64, QuotedPrintable, Uuencode, Unknown };

/** The columns of a message's row, decoded: UTF-8, each empty where the header has no such field. */
struct ListedFields {
    std::string from;
    std::string subject;
    /** Local time as `2026-11-21 17:42`; the field as it stands where it is no date. */
    std::string date;
};

/** One attachment of a message that was read as the standards have it. */
struct StandardAttachment {
    /** The decoded name, UTF-8; never empty. It may hold any character. */
    std::string name;
    /** Bytes of the decoded content. */
    std::int64_t bytes = 0;
    /** The content as it stands in the message that was read. */
    std::string_view content;
    TransferEncoding encoding = TransferEncoding::None;
};

/** What has been made of a message. Everything but the attachments' content is UTF-8. */
struct StandardMessage {
    ListedFields fields;
    /** All text to be shown, every line followed by CR LF but perhaps the last. */
    std::string text;
    /** In the order of the message. */
    std::vector<StandardAttachment> attachments;
    /** Where answers go, as the To field takes it: the mailboxes of Reply-To, or else of From. */
    std::string answerTo;
    std::string messageId;
    /** The ids for an answer's References field; see AnsweredMessage. */
    std::vector<std::string> references;
    /** The body when it begins in the header, which it then is copied with; the attachments refer to it. */
    std::shared_ptr<const std::string> joinedBody;
};

/**
 * Reads mail as RFC 5322, 2045 to 2049, 2047, 2231, 3676 and 6532 have it. No message is an error: what
 * cannot be decoded is given as it stands. One object serves all threads.
 */
class StandardReader {
  public:
    StandardReader() = default;
    virtual ~StandardReader() = default;
    StandardReader(const StandardReader&) = delete;
    StandardReader& operator=(const StandardReader&) = delete;

    /** Decodes the fields as they came, unfolded or not. */
    virtual ListedFields listed(const ListedFields& fields) const = 0;

    /**
     * Reads a message: its header, without the empty line behind it, and its body. The attachments refer to
     * the body.
     */
    virtual StandardMessage read(std::string_view header, std::string_view body) const = 0;

    /** Hands over the attachment's decoded bytes in pieces; raises what `take` raises. */
    virtual void decode(const StandardAttachment& attachment,
                        const std::function<void(std::string_view)>& take) const = 0;
};

/**
 * The reader, from the library that is loaded at the first call.
 * \throws RuntimeError 53 when the library cannot be loaded.
 */
const StandardReader& standardReader();
