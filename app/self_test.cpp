#include "app/self_test.h"

#include "components/controls/wave_player.h"
#include "platform/own_library.h"
#include "platform/text_printer.h"

#include <cstdio>
#include <cstdlib>

int testItself(const std::function<int(const std::function<void()>& beforeWindows)>& showWindows) {
    // Members never load it.
    constexpr const char* library = "libbrindlewake_selftest.so";
    const auto test = platform::functionIn<int (*)(const SelfTestOrder&)>(library, "brindlewakeTestItself");
    if (test == nullptr) {
        static_cast<void>(std::printf("FAILED   load the test: %s cannot be loaded\n", library));
        return EXIT_FAILURE;
    }
    SelfTestOrder order;
    order.showWindows = showWindows;
    order.printInto = [](const QString& file) {
        platform::replaceDefaultPrinter([file] { return platform::makeFilePrinter(file); });
    };
    order.printerName = platform::defaultPrinterName;
    order.playSound = controls::playWaveAndTell;
    return test(order);
}
