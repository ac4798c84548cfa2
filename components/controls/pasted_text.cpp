#include "components/controls/pasted_text.h"

#include "components/controls/shown_lines.h"

#include <QStringView>

#include <utility>

namespace controls {

namespace {
constexpr auto kLongestLine = static_cast<qsizetype>(kLongestShownLine);

/** Returns where to break a line that is too long: after a space, or else between two characters. */
qsizetype breakIn(QStringView line) {
    const qsizetype space = line.lastIndexOf(u' ', kLongestLine - 1);
    if (space >= 0) {
        return space + 1;
    }
    return line.at(kLongestLine).isLowSurrogate() ? kLongestLine - 1 : kLongestLine;
}
} // namespace

std::optional<QString> pastableText(const QString& text) {
    if (text.size() > kMostPastedCharacters) {
        return std::nullopt;
    }
    QString unified = text;
    unified.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar& letter : unified) {
        const bool endsLine = letter == u'\r' || letter == QChar::ParagraphSeparator || letter == u'\u2028';
        letter = endsLine ? QChar(u'\n') : letter;
    }
    if (unified.count(u'\n') >= kMostPastedLines) {
        return std::nullopt;
    }
    unified = holdable(std::move(unified));
    QString lines;
    lines.reserve(unified.size() + unified.size() / kLongestLine);
    for (QStringView rest = unified; !rest.isEmpty();) {
        const qsizetype end = rest.indexOf(u'\n');
        const qsizetype length = end < 0 ? rest.size() : end;
        if (length > kLongestLine) {
            const qsizetype taken = breakIn(rest);
            lines += rest.first(taken);
            lines += kShownBreak;
            rest = rest.sliced(taken);
            continue;
        }
        const qsizetype taken = end < 0 ? length : length + 1;
        lines += rest.first(taken);
        rest = rest.sliced(taken);
    }
    return lines;
}

} // namespace controls
