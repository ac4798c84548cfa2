#pragma once

#include "selftest/interruptions.h"
#include "selftest/teller.h"

#include <chrono>
#include <functional>
#include <string>

namespace selftest {

/**
 * Does the work in a process of its own and waits for its end, which comes at the latest when the time is up,
 * when an interruption has come, and when this process dies. The work gets a teller, whose notes are handed
 * to `take` here, and returns the status of its process. No destructor of this process runs in the other one.
 * Returns why that was no good end; empty after status 0, and after status 1, which says that a step has
 * failed. \throws std::system_error when there cannot be another process.
 */
std::string watchProcess(const std::function<int(Teller&)>& work,
                         const std::function<void(const Note&)>& take, const Interruptions& interruptions,
                         std::chrono::steady_clock::time_point until);

} // namespace selftest
