#pragma once

#include <QString>
#include <QStringList>

namespace platform {

/**
 * The text for showing in a window that reads from right to left: each line keeps the order that its own
 * first letter asks for (the isolates of Unicode's annex 9), or "(12 bytes)" and the ">" behind an address
 * would stand at the wrong end. For showing only: nothing that is kept, copied or sent has these marks.
 */
inline QString inItsOwnOrder(const QString& text) {
    constexpr QChar firstStrongIsolate = u'\u2068';
    constexpr QChar popDirectionalIsolate = u'\u2069';
    QStringList lines = text.split(u'\n');
    for (QString& line : lines) {
        line = firstStrongIsolate + line + popDirectionalIsolate;
    }
    return lines.join(u'\n');
}

} // namespace platform
