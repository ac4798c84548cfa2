#include "platform/program.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <cstdlib>
#include <sys/resource.h>
#include <utility>
#include <vector>

namespace platform {

namespace {
std::function<void()>& endProgramStandIn() {
    static std::function<void()> standIn;
    return standIn;
}

std::vector<BeforeTheEnd*>& beforeTheEnd() {
    static std::vector<BeforeTheEnd*> all;
    return all;
}
} // namespace

BeforeTheEnd::BeforeTheEnd(std::function<void()> action) : action_(std::move(action)) {
    beforeTheEnd().push_back(this);
}

BeforeTheEnd::~BeforeTheEnd() {
    std::erase(beforeTheEnd(), this);
}

void endProgram() {
    for (const BeforeTheEnd* const one : beforeTheEnd()) {
        static_cast<void>(errorNumberOf(one->action_));
    }
    if (const auto& standIn = endProgramStandIn()) {
        standIn();
        return;
    }
    std::_Exit(EXIT_SUCCESS);
}

void refuseCoreDumps() noexcept {
    // A limit of 0 stops files, but a collector would still get the core dump. A limit of 1 stops both
    // (core(5)).
    const rlimit none{1, 1};
    // This fails only where the limit is lower already.
    static_cast<void>(setrlimit(RLIMIT_CORE, &none));
}

void replaceEndProgram(std::function<void()> standIn) {
    endProgramStandIn() = std::move(standIn);
}

} // namespace platform
