#include "message/word_wrap.h"

#include "platform/text_printer.h"

#include <QString>

namespace {
constexpr double kFontSize = 9.75; // points
constexpr QStringView kSpace = u" ";
constexpr QStringView kRightMargin = u"ZZZZZZZZ";
} // namespace

QStringView takeWord(QStringView& text, QStringView delimiter) {
    const qsizetype position = text.isEmpty() ? -1 : text.indexOf(delimiter);
    const QStringView word = position < 0 ? text : text.first(position);
    text = position < 0 ? QStringView() : text.sliced(position + 1);
    return word;
}

void printText(platform::TextPrinter& printer, QStringView text) {
    printer.setFont(QLatin1String(kPrintedFamily), kFontSize);
    // The margin is measured once, because the font does not change.
    const double margin = printer.textWidth(kRightMargin);
    while (!text.isEmpty()) {
        const QStringView word = takeWord(text, kSpace);
        if (printer.printableWidth() - margin < printer.currentX() + printer.textWidth(word)) {
            printer.endLine();
        }
        printer.print(word);
        printer.print(kSpace);
    }
    printer.endLine();
    printer.endDocument();
}
