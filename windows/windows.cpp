#include "windows/windows.h"

#include "platform/nested_wait.h"
#include "windows/frmAbout.h"
#include "windows/frmFind.h"
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

    /** The program's windows from the topmost one down; empty for those that are not loaded. */
    Slots<frmFind, frmSend, frmFrom, frmSetup, frmMain, frmLogin, frmAbout> fromTheTop;
    /** Size and place of each window when it was hidden last, by its object name. */
    std::map<QString, QByteArray> places;
    QString attachFolder;
    /** Unloaded windows that a handler further down the call stack may still use. */
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
        // Form_Load runs once the accessor can find the window, since loading it may load a window that asks
        // for this one.
        window->Form_Load();
    }
    return *window;
}

/** Returns the visible windows from the topmost one down. */
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

/** Hides the window and forgets it. Returns false for the main window, whose unloading ends the program. */
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

frmFind& findWindow() {
    return loaded<frmFind>();
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

// This is here and not in form.cpp, so that the code for a window's looks depends on no other window.
void Form::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (isEnabled()) {
        runHandler([this] { unload(*this); });
    }
}

namespace {
/** Returns the window that this one is opened from; null when it has none, as the login window. */
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

/**
 * Moves the window to the middle of its opener, or to its foot, or to the middle of the screen when null, but
 * not over the screen's edge.
 */
void standInTheMiddle(Form& window, const Form* opener) {
    const QRect screen = (opener != nullptr ? opener : &window)->screen()->availableGeometry();
    const QSize frame = opener != nullptr ? opener->frameGeometry().size() - opener->size() : QSize(0, 0);
    QRect place(QPoint(0, 0), window.size() + frame);
    place.moveCenter(opener != nullptr ? opener->frameGeometry().center() : screen.center());
    if (opener != nullptr && window.standsAtTheFoot()) {
        place.moveBottom(opener->frameGeometry().bottom());
    }
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
    // The window system has only restored the window, as from its minimised state.
    if (event->spontaneous()) {
        return;
    }
    const Form* opener = openerOf(*this);
    if (opener != nullptr && opener->windowHandle() == nullptr) {
        // The opener has never been shown, so it has no place on the screen.
        opener = nullptr;
    }
    // A transient parent and not a parent: the opener is often disabled, and a child would be disabled with
    // it. The offscreen platform has no window manager to heed it, and does not make such a window the active
    // one.
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
/** Returns the topmost visible window that is enabled, or else the topmost visible one; null without any. */
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
 * A window manager ignores an activation request whose time is before the user's last key press in any
 * program. Qt's request has the time of the last event that it received. Changing a property, here by setting
 * the title, makes the window system send such an event.
 */
void activateWithPresentTime(QWidget& window) {
    constexpr std::chrono::milliseconds untilTheEventHasCome{100};
    window.windowHandle()->setTitle(window.windowHandle()->title());
    QTimer::singleShot(untilTheEventHasCome, &window, [&window] {
        // When one of the windows is active already, the user may be working in it.
        if (QApplication::activeWindow() == nullptr && window.isVisible()) {
            window.activateWindow();
        }
    });
}
} // namespace

void bringUpWindowInUse() {
    QWidget* front = QApplication::activeWindow();
    // A minimised window may still count as the active one, since it loses the focus later.
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
