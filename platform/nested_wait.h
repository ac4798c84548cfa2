#pragma once

namespace platform {

/**
 * Marks that a handler waits in an event loop of its own: for a server, under a message box, in a dialog.
 * While any wait runs, handlers further down the stack still use their windows, so no window may be
 * destroyed.
 */
class NestedWait {
  public:
    NestedWait() noexcept { ++depth_; }

    ~NestedWait() {
        if (--depth_ == 0 && lastEnded_ != nullptr) {
            lastEnded_();
        }
    }

    NestedWait(const NestedWait&) = delete;
    NestedWait& operator=(const NestedWait&) = delete;

    static bool anyRuns() noexcept { return depth_ > 0; }

    /**
     * Sets the function that is called whenever the outermost wait ends; it must not throw. nullptr sets
     * none.
     */
    static void whenLastEnds(void (*function)()) noexcept { lastEnded_ = function; }

  private:
    inline static int depth_ = 0;
    inline static void (*lastEnded_)() = nullptr;
};

} // namespace platform
