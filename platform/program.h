#pragma once

#include <functional>

namespace platform {

/**
 * Runs an action in endProgram(), before the process ends, for as long as this object lives: to save what
 * would be lost with the process. Several actions run in the order in which their objects were made. An error
 * that an action raises is ignored, because no window is left to show it.
 */
class BeforeTheEnd {
  public:
    explicit BeforeTheEnd(std::function<void()> action);
    ~BeforeTheEnd();
    BeforeTheEnd(const BeforeTheEnd&) = delete;
    BeforeTheEnd& operator=(const BeforeTheEnd&) = delete;

  private:
    friend void endProgram();

    std::function<void()> action_;
};

/**
 * Ends the process at once, after the actions of all BeforeTheEnd objects. No window is unloaded, no server
 * is told. The caller must return right after it, because a stand-in in a test does come back.
 */
void endProgram();

/**
 * From here on the system writes no core dump when this process crashes, and gives none to a collector of
 * crashes: the password is in memory for the whole run.
 */
void refuseCoreDumps() noexcept;

/** Replaces the real end by a function, for tests. An empty function brings the real one back. */
void replaceEndProgram(std::function<void()> standIn);

} // namespace platform
