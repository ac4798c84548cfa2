#pragma once

// What tests do while the program waits for a server.

#include "tests/support/scripted_server.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace support {

/** Lets timers and sockets work until it is so; false after the time limit. */
bool eventsRunUntil(const std::function<bool()>& condition);

/**
 * Runs the action once, from the event loop, as soon as the condition holds; for looking at the windows while
 * a request waits. The test fails when it never holds.
 */
class WhenItHolds {
  public:
    WhenItHolds(std::function<bool()> condition, std::function<void()> action);
    ~WhenItHolds();
    WhenItHolds(const WhenItHolds&) = delete;
    WhenItHolds& operator=(const WhenItHolds&) = delete;

    bool hasRun() const;

  private:
    struct Watch;
    std::unique_ptr<Watch> watch_;
};

/** For a test of requests inside the wait of another one. */
class InsideAWait {
  protected:
    /** Runs the action inside the wait that follows, once the server has heard so many lines; then releases
     * it. */
    void insideTheWait(ScriptedServer& server, std::size_t lines, std::function<void()> action);

    bool actionRan = false;

  private:
    std::unique_ptr<WhenItHolds> watch_;
};

} // namespace support
