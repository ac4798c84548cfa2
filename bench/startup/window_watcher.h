#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace bench {

/** What was seen of a window when its picture first stood on the screen. */
struct DrawnWindow {
    std::chrono::steady_clock::time_point when;
    int width = 0;
    int height = 0;
};

/**
 * Watches the screen of an X server from outside, so that the programs that are timed need no change. A
 * window counts as drawn when something was painted in it and its picture is no longer of one colour: mapping
 * a window alone reports damage too.
 */
class WindowWatcher {
  public:
    /** Watches from here on. \throws std::runtime_error without a display or its DAMAGE extension. */
    WindowWatcher();

    /**
     * Waits for the window with that title, at least `minimumWidth` pixels wide, to be drawn.
     * \throws std::runtime_error when it has not come in time.
     */
    DrawnWindow waitUntilDrawn(const std::string& title, int minimumWidth);

  private:
    struct Free {
        void operator()(void* memory) const noexcept;
    };

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const noexcept;
    };

    template <class Reply>
    using Owned = std::unique_ptr<Reply, Free>;

    Owned<xcb_generic_event_t> nextEvent(std::chrono::steady_clock::time_point deadline);
    std::string titleOf(xcb_window_t window);
    bool hasPicture(xcb_window_t window, int width, int height);
    std::optional<DrawnWindow> lookAt(xcb_window_t window, const std::string& title, int minimumWidth);

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_atom_t nameAtom_ = 0;
    std::uint8_t firstDamageEvent_ = 0;
};

} // namespace bench
