#pragma once

#include <functional>

namespace platform {

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
