#include "selftest/outcome_lines.h"

#include <cstdio>
#include <utility>

namespace selftest {

namespace {
const char* wordOf(Outcome outcome) {
    switch (outcome) {
    case Outcome::Ok:
        return "ok      ";
    case Outcome::Failed:
        return "FAILED  ";
    case Outcome::NotHere:
        break;
    }
    return "not here";
}
} // namespace

void OutcomeLines::tell(Outcome outcome, const std::string& step, const std::string& why) {
    anyFailed_ = anyFailed_ || outcome == Outcome::Failed;
    const std::string reason = why.empty() ? std::string() : ": " + why;
    static_cast<void>(std::printf("%s %s%s\n", wordOf(outcome), step.c_str(), reason.c_str()));
    // Whoever looks on sees each step when it is done.
    static_cast<void>(std::fflush(stdout));
}

void OutcomeLines::take(const Note& note) {
    if (note.kind == Note::Kind::Ends) {
        tell(note.outcome, std::exchange(step_, {}), note.text);
        return;
    }
    step_ = note.text;
    isLast_ = note.kind == Note::Kind::BeginsLast;
}

void OutcomeLines::processEnded(const std::string& fault) {
    const bool wasInStep = !step_.empty();
    const std::string step = wasInStep ? std::exchange(step_, {}) : "stay alive until the end";
    if (!fault.empty()) {
        tell(Outcome::Failed, step, fault);
    } else if (wasInStep && isLast_) {
        tell(Outcome::Ok, step);
    } else if (wasInStep) {
        tell(Outcome::Failed, step, "the program has ended");
    }
}

} // namespace selftest
