#include "tests/support/pdf_words.h"

#include <QProcess>
#include <QStandardPaths>
#include <QXmlStreamReader>

#include <cmath>
#include <stdexcept>

namespace support {

namespace {
const QString kProgram = QStringLiteral("pdftotext");

PdfDocument documentIn(const QByteArray& html) {
    PdfDocument document;
    QXmlStreamReader xml(html);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const auto number = [attributes = xml.attributes()](const char* name) {
            return attributes.value(QLatin1String(name)).toDouble();
        };
        if (xml.name() == QLatin1String("page")) {
            ++document.pages;
            document.pageWidth = number("width");
            document.pageHeight = number("height");
        } else if (xml.name() == QLatin1String("word")) {
            const PdfWord place = {
                {}, document.pages, number("xMin"), number("yMin"), number("xMax"), number("yMax")};
            document.words.push_back(place);
            document.words.back().text = xml.readElementText().toStdString();
        }
    }
    return document;
}
} // namespace

std::vector<std::string> PdfDocument::lines() const {
    std::vector<std::string> lines;
    const PdfWord* before = nullptr;
    for (const PdfWord& word : words) {
        if (before != nullptr && before->page == word.page && std::abs(before->bottom - word.bottom) < 1) {
            lines.back() += ' ' + word.text;
        } else {
            lines.push_back(word.text);
        }
        before = &word;
    }
    return lines;
}

std::string whyPdfIsUnreadable() {
    return QStandardPaths::findExecutable(kProgram).isEmpty() ? "pdftotext is not installed on this computer."
                                                              : "";
}

PdfDocument readPdf(const std::filesystem::path& file) {
    QProcess program;
    program.start(kProgram, {QStringLiteral("-raw"), QStringLiteral("-bbox"),
                             QString::fromStdString(file.string()), QStringLiteral("-")});
    if (!program.waitForFinished() || program.exitStatus() != QProcess::NormalExit ||
        program.exitCode() != 0) {
        throw std::runtime_error("pdftotext: " + program.readAllStandardError().toStdString());
    }
    return documentIn(program.readAllStandardOutput());
}

} // namespace support
