#pragma once

#include <QString>
#include <QStringList>

namespace platform {

/**
 * The text as a window that reads from right to left shows it: each line keeps the direction of its own first
 * letter (by the isolates of Unicode's annex 9). Otherwise "(12 bytes)" and the ">" behind an address would
 * stand at the wrong end. Only for showing: text that is kept, copied or sent must not have these marks.
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
