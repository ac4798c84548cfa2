#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace transport {

/** A certificate that a server has presented, as a person may be told of it. */
struct Certificate {
    /** Whose it is: the common name, or the organisation, or the first of its names. */
    QString subject;
    /** Who has issued it. */
    QString issuer;
    /** The names of hosts and the addresses that it is for, without the common name. */
    QStringList names;
    QDateTime validFrom;
    QDateTime validUntil;
    /** What is wrong with it, in words; empty where nothing is, and where nobody has looked. */
    QStringList faults;
};

} // namespace transport
