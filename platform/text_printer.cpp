#include "platform/text_printer.h"

#include "platform/own_library.h"
#include "platform/runtime_error.h"

#include <utility>

namespace platform {

namespace {
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
    static const auto make =
        functionIn<MakePrinter>("libbrindlewake_printing.so", "brindlewakeMakeDefaultPrinter");
    if (make == nullptr) {
        throw RuntimeError(errors::PrinterError);
    }
    return std::unique_ptr<TextPrinter>(make());
}

void replaceDefaultPrinter(std::function<std::unique_ptr<TextPrinter>()> standIn) {
    defaultPrinterStandIn() = std::move(standIn);
}

} // namespace platform
