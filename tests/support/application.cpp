#include "tests/support/application.h"

#include "windows/application.h"

#include <memory>

namespace support {

namespace {
std::unique_ptr<QApplication>& slot() {
    static std::unique_ptr<QApplication> application;
    return application;
}
} // namespace

QApplication& application() {
    if (!slot()) {
        static int argumentCount = 1;
        static char name[] = "tests";
        static char* arguments[] = {name, nullptr};
        // Qt keeps a reference to both for as long as the application lives.
        slot() = std::make_unique<Application>(argumentCount, arguments);
        QApplication::setQuitOnLastWindowClosed(false);
    }
    return *slot();
}

void endApplication() {
    slot().reset();
}

} // namespace support
