#pragma once

#include "selftest/teller.h"

#include <string>

namespace selftest {

/** Tells each step on the standard output as it ends, and remembers whether one has failed. */
class OutcomeLines {
  public:
    void tell(Outcome outcome, const std::string& step, const std::string& why = {});

    /** Tells what a note says when a step has ended. */
    void take(const Note& note);

    /**
     * The process of the notes has come to its end: well, if it was to end in its last step and `fault` is
     * empty. Otherwise the step that it was in has failed, or the whole, if it was in none.
     */
    void processEnded(const std::string& fault);

    bool anyFailed() const noexcept { return anyFailed_; }

  private:
    /** The step that has begun and not ended; empty for none. */
    std::string step_;
    bool isLast_ = false;
    bool anyFailed_ = false;
};

} // namespace selftest
