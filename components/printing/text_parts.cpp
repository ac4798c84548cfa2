#include "components/printing/text_parts.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace printing {

namespace {
/**
 * In UTF-16 units: longer than a word, and short enough to be measured repeatedly where a text without spaces
 * has to be broken.
 */
constexpr qsizetype kPieceLength = 64;

bool isPlain(QChar character) {
    return character != u'\t' && character != u'\r' && character != u'\n';
}

/** Where to cut the text so that a piece of it is at most kPieceLength long. */
qsizetype pieceEnd(QStringView text) {
    if (text.size() <= kPieceLength) {
        return text.size();
    }
    // Whether a character ends at the cut depends on what follows it.
    const QStringView around = text.first(std::min(text.size(), kPieceLength + 8));
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, around.data(), around.size());
    boundary.setPosition(kPieceLength);
    const qsizetype end = boundary.isAtBoundary() ? kPieceLength : boundary.toPreviousBoundary();
    return end > 0 ? end : kPieceLength;
}
} // namespace

TextPart takePart(QStringView& text) {
    const auto take = [&text](qsizetype length) {
        const QStringView taken = text.first(length);
        text = text.sliced(length);
        return taken;
    };
    if (text.front() == u'\t') {
        return {TextPart::Kind::Tab, take(1)};
    }
    if (!isPlain(text.front())) {
        return {TextPart::Kind::LineBreak, take(text.startsWith(u"\r\n") ? 2 : 1)};
    }
    const QStringView ahead = text.first(std::min(text.size(), kPieceLength + 8));
    const auto end = std::find_if_not(ahead.begin(), ahead.end(), isPlain);
    return {TextPart::Kind::Text, take(pieceEnd(ahead.first(end - ahead.begin())))};
}

} // namespace printing
