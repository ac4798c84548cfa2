#include "windows/wiring.h"

#include "components/controls/message_box.h"
#include "platform/runtime_error.h"

void runHandler(const std::function<void()>& handler) {
    if (const int error = platform::errorNumberOf(handler)) {
        controls::reportError(error);
    }
}
