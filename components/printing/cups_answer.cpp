#include "components/printing/cups_answer.h"

#include <QLibrary>

namespace printing {

namespace {
/** The last of the status codes that mean success (RFC 8011, appendix B.1.1). */
constexpr int kLastSuccess = 0x00FF;
} // namespace

bool cupsRefused() {
    // Qt's printing plugin has loaded the library if it is installed, and calls it on this same thread.
    QLibrary library(QStringLiteral("cups"), 2);
    const auto lastError = reinterpret_cast<int (*)()>(library.resolve("cupsLastError"));
    if (lastError == nullptr) {
        return false;
    }
    const int status = lastError();
    return status < 0 || status > kLastSuccess;
}

} // namespace printing
