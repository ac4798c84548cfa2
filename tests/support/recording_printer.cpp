#include "tests/support/recording_printer.h"

#include <algorithm>

namespace support {

namespace {
bool isLineBreak(QChar character) {
    return character == u'\r' || character == u'\n';
}
} // namespace

void RecordingPrinter::setFont(const QString& family, double size) {
    document_.font = family.toStdString();
    document_.fontSize = size;
}

double RecordingPrinter::textWidth(QStringView text) const {
    double widest = 0;
    double width = 0;
    for (const QChar character : text) {
        width = isLineBreak(character) ? 0 : width + 1;
        widest = std::max(widest, width);
    }
    return widest;
}

void RecordingPrinter::print(QStringView text) {
    ++document_.printCalls;
    document_.rest += text.toString().toStdString();
    for (const QChar character : text) {
        x_ = isLineBreak(character) ? 0 : x_ + 1;
    }
}

void RecordingPrinter::endLine() {
    document_.lines.push_back(document_.rest);
    document_.rest.clear();
    x_ = 0;
}

} // namespace support
