#include "components/printing/paper_printer.h"

#include "components/printing/cups_answer.h"
#include "components/printing/text_parts.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QPrinter>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <utility>

namespace printing {

namespace {
/** The distance between tab stops is the width of this text. */
constexpr QStringView kTabColumns = u"00000000";

bool isSpace(QStringView text) {
    return std::all_of(text.begin(), text.end(), [](QChar character) { return character == u' '; });
}

[[noreturn]] void fail() {
    throw platform::RuntimeError(platform::errors::PrinterError);
}
} // namespace

PaperPrinter::PaperPrinter(std::unique_ptr<QPrinter> printer)
    : printer_(std::move(printer)),
      metrics_(QFont(), printer_.get()),
      tabWidth_(metrics_.horizontalAdvance(kTabColumns.toString())) {
    if (!painter_.begin(printer_.get())) {
        fail();
    }
    painter_.setLayoutDirection(Qt::LeftToRight);
}

PaperPrinter::~PaperPrinter() = default;

void PaperPrinter::setFont(const QString& family, double size) {
    QFont font(family);
    font.setPointSizeF(size);
    painter_.setFont(font);
    metrics_ = QFontMetricsF(font, printer_.get());
    tabWidth_ = metrics_.horizontalAdvance(kTabColumns.toString());
}

double PaperPrinter::printableWidth() const {
    return printer_->width();
}

double PaperPrinter::textWidth(QStringView text) const {
    double widest = 0;
    double begin = x_;
    double x = x_;
    while (!text.isEmpty()) {
        const TextPart part = takePart(text);
        switch (part.kind) {
        case TextPart::Kind::Text:
            x += metrics_.horizontalAdvance(platform::withControlsVisible(part.text.toString()));
            break;
        case TextPart::Kind::Tab:
            x = tabStopAfter(x);
            break;
        case TextPart::Kind::LineBreak:
            widest = std::max(widest, x - begin);
            begin = 0;
            x = 0;
            break;
        }
        pause();
    }
    return std::max(widest, x - begin);
}

void PaperPrinter::print(QStringView text) {
    while (!text.isEmpty()) {
        const TextPart part = takePart(text);
        switch (part.kind) {
        case TextPart::Kind::Text:
            printPiece(platform::withControlsVisible(part.text.toString()));
            break;
        case TextPart::Kind::Tab:
            x_ = tabStopAfter(x_);
            break;
        case TextPart::Kind::LineBreak:
            endLine();
            break;
        }
        pause();
    }
}

void PaperPrinter::endLine() {
    y_ += metrics_.lineSpacing();
    x_ = 0;
}

void PaperPrinter::endDocument() {
    const bool ended = painter_.end();
    const bool toFile = printer_->outputFormat() == QPrinter::PdfFormat;
    if (!ended || (!toFile && cupsRefused())) {
        fail();
    }
}

double PaperPrinter::tabStopAfter(double x) const {
    return (std::floor(x / tabWidth_) + 1) * tabWidth_;
}

void PaperPrinter::printPiece(QString piece) {
    while (!piece.isEmpty()) {
        if (isSpace(piece)) {
            x_ += metrics_.horizontalAdvance(piece);
            return;
        }
        const qsizetype length = fittingLength(piece);
        if (length == 0) {
            endLine();
            continue;
        }
        draw(piece.first(length));
        piece = piece.sliced(length);
    }
}

void PaperPrinter::draw(const QString& text) {
    turnPages();
    painter_.drawText(QPointF(x_, y_ + metrics_.ascent()), text);
    x_ += metrics_.horizontalAdvance(text);
}

/**
 * How much of the text fits on the rest of the line, in UTF-16 units; on an empty line at least one
 * character.
 */
qsizetype PaperPrinter::fittingLength(const QString& piece) const {
    const double space = printableWidth() - x_;
    if (metrics_.horizontalAdvance(piece) <= space) {
        return piece.size();
    }
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, piece);
    qsizetype fitting = 0;
    for (qsizetype end = boundary.toNextBoundary(); end >= 0; end = boundary.toNextBoundary()) {
        const bool mustGoHere = x_ <= 0 && fitting == 0;
        if (!mustGoHere && metrics_.horizontalAdvance(piece.first(end)) > space) {
            break;
        }
        fitting = end;
    }
    return fitting;
}

/** Goes to the page that the current line stands on. */
void PaperPrinter::turnPages() {
    const double spacing = metrics_.lineSpacing();
    const double lines = std::floor((printer_->height() - metrics_.height()) / spacing) + 1;
    const double usedHeight = std::max(lines, 1.0) * spacing;
    while (y_ > usedHeight - spacing / 2) {
        if (!printer_->newPage()) {
            fail();
        }
        y_ = std::max(y_ - usedHeight, 0.0);
    }
}

void PaperPrinter::pause() const {
    if (betweenPieces) {
        betweenPieces();
    }
}

} // namespace printing
