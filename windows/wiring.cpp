#include "windows/wiring.h"

#include "platform/message_box.h"
#include "platform/runtime_error.h"

void runHandler(const std::function<void()>& handler) {
    if (const int error = platform::errorNumberOf(handler)) {
        platform::showMessageBox({QStringLiteral("Run-time error %1\n\n%2")
                                      .arg(error)
                                      .arg(QString::fromStdString(platform::meaningOf(error))),
                                  QStringLiteral("Brindlewake"), platform::MessageIcon::Exclamation,
                                  platform::MessageButtons::Ok});
    }
}
