#include "windows/windows.h"

#include "platform/nested_wait.h"
#include "windows/frmAbout.h"
#include "windows/frmFrom.h"
#include "windows/frmLogin.h"
#include "windows/frmMain.h"
#include "windows/frmSend.h"
#include "windows/frmSetup.h"
#include "windows/wiring.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <map>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

struct LoadedWindows::Windows {
    template <class... Window>
    using Slots = std::tuple<std::unique_ptr<Window>...>;

    /** All that the program has, from the one that lies over the others down; those that are loaded. */
    Slots<frmSend, frmFrom, frmSetup, frmMain, frmLogin, frmAbout> fromTheTop;
    /** Size and place of each window when it was hidden last, by its name. */
    std::map<QString, QByteArray> places;
    QString attachFolder;
    /** Unloaded, but perhaps still in use by a handler further down the stack. */
    std::vector<std::unique_ptr<Form>> retired;
};

namespace {
LoadedWindows::Windows* current = nullptr;

template <class Window>
std::unique_ptr<Window>& slotOf() {
    return std::get<std::unique_ptr<Window>>(current->fromTheTop);
}

template <class Window>
Window& loaded() {
    std::unique_ptr<Window>& window = slotOf<Window>();
    if (!window) {
        window = std::make_unique<Window>();
        // Already reachable while it loads, because loading one window may ask for another and come back.
        window->Form_Load();
    }
    return *window;
}

/** The windows that can be seen, from the one that lies over the others down. */
std::vector<Form*> visibleFromTheTop() {
    std::vector<Form*> visible;
    const auto addIfVisible = [&visible](Form* window) {
        if (window != nullptr && window->isVisible()) {
            visible.push_back(window);
        }
    };
    std::apply([&](const auto&... slot) { (addIfVisible(slot.get()), ...); }, current->fromTheTop);
    return visible;
}

/** Destroys the retired windows from the outermost event loop, where no handler is on the stack. */
void destroyRetiredLater() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [] {
            if (current != nullptr && !platform::NestedWait::anyRuns()) {
                current->retired.clear();
            }
        },
        Qt::QueuedConnection);
}

/** Hides the window and forgets it; false for the main window, which takes the program with it. */
bool retire(const Form& window) {
    const auto retireIfSame = [&window]<class Window>(std::unique_ptr<Window>& slot) {
        if (std::is_same_v<Window, frmMain> || slot.get() != &window) {
            return false;
        }
        slot->hide();
        current->retired.push_back(std::move(slot));
        destroyRetiredLater();
        return true;
    };
    return std::apply([&](auto&... slot) { return (retireIfSame(slot) || ...); }, current->fromTheTop);
}
} // namespace

LoadedWindows::LoadedWindows() : windows_(std::make_unique<Windows>()) {
    current = windows_.get();
    platform::NestedWait::whenLastEnds(destroyRetiredLater);
}

LoadedWindows::~LoadedWindows() {
    platform::NestedWait::whenLastEnds(nullptr);
    windows_.reset();
    current = nullptr;
}

frmAbout& aboutWindow() {
    return loaded<frmAbout>();
}

frmFrom& messageWindow() {
    return loaded<frmFrom>();
}

frmLogin& loginWindow() {
    return loaded<frmLogin>();
}

frmMain& mainWindow() {
    return loaded<frmMain>();
}

frmSend& composeWindow() {
    return loaded<frmSend>();
}

frmSetup& setupWindow() {
    return loaded<frmSetup>();
}

QString& attachFolder() {
    return current->attachFolder;
}

// Here and not with the rest of the class, so that a window's looks need to know of no other window.
void Form::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (isEnabled()) {
        runHandler([this] { unload(*this); });
    }
}

namespace {
/** The window that this one is opened from; nothing for the first one. */
const Form* openerOf(const Form& window) {
    if (window.opener() != nullptr) {
        return window.opener();
    }
    const auto is = [&window](const auto& slot) { return slot.get() == &window; };
    if (is(slotOf<frmFrom>()) || is(slotOf<frmAbout>())) {
        return slotOf<frmMain>().get();
    }
    return is(slotOf<frmSetup>()) || is(slotOf<frmMain>()) ? slotOf<frmLogin>().get() : nullptr;
}

/** Moves the window to the middle of its opener, or of its screen, and not over the edge of that screen. */
void standInTheMiddle(Form& window, const Form* opener) {
    const QRect screen = (opener != nullptr ? opener : &window)->screen()->availableGeometry();
    const QSize frame = opener != nullptr ? opener->frameGeometry().size() - opener->size() : QSize(0, 0);
    QRect place(QPoint(0, 0), window.size() + frame);
    place.moveCenter(opener != nullptr ? opener->frameGeometry().center() : screen.center());
    place.moveRight(std::min(place.right(), screen.right()));
    place.moveBottom(std::min(place.bottom(), screen.bottom()));
    place.moveLeft(std::max(place.left(), screen.left()));
    place.moveTop(std::max(place.top(), screen.top()));
    window.move(place.topLeft());
}
} // namespace

void Form::showEvent(QShowEvent* event) {
    letReturnPressButtons();
    giveCaptionsRoom();
    mirrorLabels();
    keepCaptionsInTheirOrder();
    QWidget::showEvent(event);
    // Some other program has only brought it back.
    if (event->spontaneous()) {
        return;
    }
    const Form* opener = openerOf(*this);
    if (opener != nullptr && opener->windowHandle() == nullptr) {
        // Never shown until now, it stands nowhere.
        opener = nullptr;
    }
    // Not made a child of it: the opener is often disabled meanwhile, and a child would be disabled with it.
    // Without a window manager nobody would heed it, and the offscreen platform keeps such a window from
    // becoming the active one.
    static const bool managed = QGuiApplication::platformName() != QLatin1String("offscreen");
    windowHandle()->setTransientParent(
        managed && opener != nullptr && opener->isVisible() ? opener->windowHandle() : nullptr);
    if (const auto place = current->places.find(objectName()); place != current->places.end()) {
        restoreGeometry(place->second);
    } else if (!testAttribute(Qt::WA_Moved)) {
        standInTheMiddle(*this, opener);
    }
}

void Form::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous() && windowHandle() != nullptr) {
        current->places[objectName()] = saveGeometry();
    }
}

void unload(Form& window) {
    window.Form_Unload();
    if (retire(window)) {
        keepAWindowVisible();
    }
}

namespace {
/** The visible window that lies over the others; one that may be used, where there is such a one. */
Form* topmostWindow() {
    const std::vector<Form*> visible = visibleFromTheTop();
    const auto usable =
        std::find_if(visible.begin(), visible.end(), [](const Form* window) { return window->isEnabled(); });
    if (usable != visible.end()) {
        return *usable;
    }
    return visible.empty() ? nullptr : visible.front();
}

/**
 * Window managers let nobody to the front who asks with a time before the last key press anywhere. Qt asks
 * with the time of the last event that it has got, which a change of a property brings.
 */
void activateWithPresentTime(QWidget& window) {
    constexpr std::chrono::milliseconds untilTheEventHasCome{100};
    window.windowHandle()->setTitle(window.windowHandle()->title());
    QTimer::singleShot(untilTheEventHasCome, &window, [&window] {
        // Where it has come to the front already, a person may have gone on to another one.
        if (QApplication::activeWindow() == nullptr && window.isVisible()) {
            window.activateWindow();
        }
    });
}
} // namespace

void bringUpWindowInUse() {
    QWidget* front = QApplication::activeWindow();
    // A window that was minimised may still count as the active one: the keyboard is taken from it later.
    const bool noneInSight = front == nullptr || front->isMinimized();
    if (Form* const window = topmostWindow(); window != nullptr && noneInSight) {
        window->bringUp();
        front = window;
    }
    if (QWidget* const box = QApplication::activeModalWidget()) {
        front = box;
    }
    if (front != nullptr) {
        front->setWindowState(front->windowState() & ~Qt::WindowStates(Qt::WindowMinimized));
        front->raise();
        front->activateWindow();
        activateWithPresentTime(*front);
    }
}

void keepAWindowVisible() {
    if (visibleFromTheTop().empty()) {
        mainWindow().bringUp();
    }
}
