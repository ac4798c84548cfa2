#include "components/printing/paper_printer.h"
#include "platform/runtime_error.h"

#include <QPrinter>
#include <QPrinterInfo>

#include <memory>
#include <utility>

namespace {
/** Begins a document on the printer; the caller owns what is returned. */
platform::TextPrinter* begun(std::unique_ptr<QPrinter> printer) {
    printer->setDocName(QStringLiteral("Message"));
    printer->setCreator(QStringLiteral("Brindlewake"));
    return std::make_unique<printing::PaperPrinter>(std::move(printer)).release();
}
} // namespace

/**
 * The function that platform::makeDefaultPrinter() looks up in this library; the caller owns the printer.
 * \throws RuntimeError 482 when there is no default printer.
 */
extern "C" __attribute__((visibility("default"))) platform::TextPrinter* brindlewakeMakeDefaultPrinter() {
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    // Without a default printer, Qt would write a file that the user would never find.
    if (info.isNull()) {
        throw platform::RuntimeError(platform::errors::PrinterError);
    }
    return begun(std::make_unique<QPrinter>(info, QPrinter::HighResolution));
}

/** The same for platform::makeFilePrinter(). \throws RuntimeError 482 when the file cannot be written. */
extern "C" __attribute__((visibility("default"))) platform::TextPrinter*
brindlewakeMakeFilePrinter(const QString& file) {
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(file);
    return begun(std::move(printer));
}

extern "C" __attribute__((visibility("default"))) void brindlewakeDefaultPrinterName(QString& name) {
    name = QPrinterInfo::defaultPrinterName();
}
