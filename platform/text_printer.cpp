#include "platform/text_printer.h"

#include "platform/own_library.h"
#include "platform/runtime_error.h"

#include <utility>

namespace platform {

namespace {
constexpr const char* kPrintingLibrary = "libbrindlewake_printing.so";

std::function<std::unique_ptr<TextPrinter>()>& defaultPrinterStandIn() {
    static std::function<std::unique_ptr<TextPrinter>()> standIn;
    return standIn;
}
} // namespace

std::unique_ptr<TextPrinter> makeDefaultPrinter() {
    if (const auto& standIn = defaultPrinterStandIn()) {
        return standIn();
    }
    using MakePrinter = TextPrinter* (*)();
    static const auto make = functionIn<MakePrinter>(kPrintingLibrary, "brindlewakeMakeDefaultPrinter");
    if (make == nullptr) {
        throw RuntimeError(errors::PrinterError);
    }
    return std::unique_ptr<TextPrinter>(make());
}

std::unique_ptr<TextPrinter> makeFilePrinter(const QString& file) {
    using MakePrinter = TextPrinter* (*)(const QString&);
    const auto make = functionIn<MakePrinter>(kPrintingLibrary, "brindlewakeMakeFilePrinter");
    if (make == nullptr) {
        throw RuntimeError(errors::PrinterError);
    }
    return std::unique_ptr<TextPrinter>(make(file));
}

QString defaultPrinterName() {
    QString name;
    const auto write = functionIn<void (*)(QString&)>(kPrintingLibrary, "brindlewakeDefaultPrinterName");
    if (write != nullptr) {
        write(name);
    }
    return name;
}

void replaceDefaultPrinter(std::function<std::unique_ptr<TextPrinter>()> standIn) {
    defaultPrinterStandIn() = std::move(standIn);
}

} // namespace platform
