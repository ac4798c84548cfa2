#pragma once

#include "platform/nested_wait.h"

#include <QElapsedTimer>

#include <chrono>

namespace platform {

/**
 * Keeps the windows alive during long work on the same thread by handling their events now and then. Whatever
 * can happen while a handler waits for a server can happen in giveWhenDue() too.
 */
class WindowTurns {
  public:
    WindowTurns() { sinceTurn_.start(); }

    /**
     * Handles the windows' events when kWorkTime has passed since the last turn; cheap enough to be called at
     * every step.
     */
    void giveWhenDue();

    /** How long the windows may wait for a turn: too short to be noticed. */
    static constexpr std::chrono::milliseconds kWorkTime{50};

  private:
    NestedWait wait_;
    QElapsedTimer sinceTurn_;
};

} // namespace platform
