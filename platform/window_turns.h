#pragma once

#include "platform/nested_wait.h"

#include <QElapsedTimer>

#include <chrono>

namespace platform {

/**
 * Keeps the windows alive during long work on the same thread: now and then their events get a turn. The work
 * goes on in its own frame afterwards. Whatever can happen while a handler waits for a server can happen
 * in a turn too.
 */
class WindowTurns {
  public:
    WindowTurns() { sinceTurn_.start(); }

    /** Gives a turn when the last one is kWorkTime past; cheap enough to be called at every step. */
    void giveWhenDue();

    /** How long the windows may stay without a turn: too short to be noticed. */
    static constexpr std::chrono::milliseconds kWorkTime{50};

  private:
    NestedWait wait_;
    QElapsedTimer sinceTurn_;
};

} // namespace platform
