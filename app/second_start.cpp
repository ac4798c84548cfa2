#include "app/second_start.h"

#include "components/controls/message_box.h"
#include "email/box_texts.h"
#include "windows/windows.h"
#include "windows/wiring.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <cstdlib>

using platform::OnlyProgram;

namespace {
/** Returns the environment variable's value; empty when it is not set. */
std::string variable(const char* name) {
    return qgetenv(name).toStdString();
}

/** Returns a name for the display that the program's windows are on. Another display has another name. */
std::string currentScreen() {
    std::string name = QGuiApplication::platformName().toStdString();
    if (name == "xcb") {
        const std::string display = variable("DISPLAY");
        // ":0.0" names a screen of the display ":0", so both can show the same windows.
        return name + ' ' + display.substr(0, display.find('.', display.rfind(':')));
    }
    return name + ' ' + variable("WAYLAND_DISPLAY");
}
} // namespace

SecondStart::SecondStart() {
    request_.token = variable("XDG_ACTIVATION_TOKEN");
}

SecondStart::~SecondStart() = default;

std::optional<int> SecondStart::statusToEndWith() {
    request_.screen = currentScreen();
    switch (only_.start(request_)) {
    case OnlyProgram::Start::First:
        answerLaterStarts();
        return std::nullopt;
    case OnlyProgram::Start::Shown:
        return EXIT_SUCCESS;
    case OnlyProgram::Start::NotShown:
        break;
    }
    controls::showMessageBox({email::boxOfHiddenProgram(), QStringLiteral("Brindlewake"),
                              controls::MessageIcon::Exclamation, controls::MessageButtons::Ok});
    return EXIT_FAILURE;
}

void SecondStart::answerLaterStarts() {
    if (only_.listener() < 0) {
        return;
    }
    later_ = std::make_unique<QSocketNotifier>(only_.listener(), QSocketNotifier::Read);
    QObject::connect(later_.get(), &QSocketNotifier::activated, [this] {
        runHandler([this] {
            only_.answer([](const OnlyProgram::Request& request) {
                if (request.screen != currentScreen()) {
                    return false;
                }
                if (!request.token.empty()) {
                    // Some desktops let a window come to the front only with this token.
                    qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(request.token));
                }
                bringUpWindowInUse();
                return true;
            });
        });
    });
}
