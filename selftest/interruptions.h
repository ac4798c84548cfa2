#pragma once

#include <array>
#include <chrono>
#include <csignal>

namespace selftest {

/**
 * As long as this lives, SIGINT, SIGTERM and SIGHUP end nothing by themselves: whoever waits learns of them.
 * There is one at a time.
 */
class Interruptions {
  public:
    Interruptions();
    ~Interruptions();
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    /** The signal that has come; 0 for none. One that comes while nobody waits comes in the next wait. */
    int signal() const noexcept;

    /** Waits until there is something to read, a signal has come, or the time is up, of which it is false. */
    bool wait(int descriptor, std::chrono::steady_clock::time_point until) const;

    /** Takes it all back, also in a process that has been forked off; what comes from now on ends it. */
    void leave() const;

  private:
    std::array<struct sigaction, 3> actions_{};
    sigset_t mask_{};
};

} // namespace selftest
