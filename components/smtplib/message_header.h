#pragma once

#include "components/smtplib/address_list.h"

#include <QDateTime>

#include <string>
#include <string_view>
#include <vector>

namespace smtplib {

/** What the header of a message is made of. */
struct HeaderFields {
    Address sender;
    std::vector<Address> recipients;
    std::vector<Address> copies;
    /** UTF-8. */
    std::string subject;
    QDateTime date;
    /** With its angle brackets; empty for none. */
    std::string messageId;
    /** Further lines, each with CR LF behind it. They may name none of the fields that are made here. */
    std::string additionalLines;
};

/**
 * Returns the header's lines, each with CR LF: From; To, Cc and Message-ID where they are not empty; Subject;
 * Date; and the additional lines as they are. Lines are folded at spaces (RFC 5322 sections 2.1.1 and 2.2.3);
 * what is not ASCII goes out as encoded words (RFC 2047).
 *
 * \throws RuntimeError 20403 when the subject holds CR, LF or NUL, 20404 when the Message-ID or an additional
 * line is malformed.
 */
std::string messageHeader(const HeaderFields& fields);

/** Whether the text is a Message-ID: "<left@right>", printable ASCII, without spaces or further brackets. */
bool isMessageId(std::string_view id);

/** A date for the header (RFC 5322 section 3.3): English names, numeric zone, whatever the locale. */
std::string dateText(const QDateTime& date);

/**
 * Checks lines that are to become part of a header: every one has a name, a colon and a CR LF, or continues
 * the one before; all are printable ASCII and no longer than a line may be.
 * \throws RuntimeError 20404 when one breaks this rule, or names a field that the client writes itself.
 */
void checkAdditionalLines(std::string_view lines);

} // namespace smtplib
