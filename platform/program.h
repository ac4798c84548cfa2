#pragma once

#include <functional>

namespace platform {

/**
 * Sees to something before the program ends, for as long as it lives; for what would be lost with the
 * program. Several are asked in the order in which they were made. What they throw is passed over: nobody is
 * left who could be told.
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
 * Ends the whole program at once: no window is unloaded, no server is told. A caller returns right after it,
 * because a test's stand-in does come back.
 */
void endProgram();

/**
 * From here on the system writes no image of this process when it crashes, and hands none to a collector of
 * crashes: the password is in it for the whole run.
 */
void refuseCoreDumps() noexcept;

/** Puts a function in the place of the real end, for tests. An empty function brings the real one back. */
void replaceEndProgram(std::function<void()> standIn);

} // namespace platform
