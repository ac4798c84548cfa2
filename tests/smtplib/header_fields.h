#pragma once

#include "components/smtplib/message_header.h"

#include <QDateTime>

namespace support {

/** A moment in a zone that is so many seconds ahead of universal time. */
inline QDateTime at(const QDate& date, const QTime& time, int offsetSeconds) {
    return {date, time, Qt::OffsetFromUTC, offsetSeconds};
}

/** A header from Bob to Ann. */
inline smtplib::HeaderFields plainFields() {
    smtplib::HeaderFields fields;
    fields.sender = smtplib::parseAddressList("bob@example.org").front();
    fields.recipients = smtplib::parseAddressList("ann@example.org");
    fields.subject = "Hello";
    fields.date = at({2024, 3, 1}, {9, 5, 7}, 3600);
    fields.messageId = "<1@example.org>";
    return fields;
}

} // namespace support
