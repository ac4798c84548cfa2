#pragma once

namespace platform {

/**
 * Marks that a handler waits in an event loop of its own: for a server, under a message box, in a dialog.
 * While any wait runs, handlers further down the stack still use their windows, so none may be destroyed.
 */
class NestedWait {
  public:
    NestedWait() noexcept { ++depth_; }

    ~NestedWait() { --depth_; }

    NestedWait(const NestedWait&) = delete;
    NestedWait& operator=(const NestedWait&) = delete;

    static bool anyRuns() noexcept { return depth_ > 0; }

  private:
    inline static int depth_ = 0;
};

} // namespace platform
