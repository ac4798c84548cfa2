#include "selftest/interruptions.h"

#include <algorithm>
#include <poll.h>

namespace selftest {

namespace {
using Clock = std::chrono::steady_clock;

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t hasCome = 0;

extern "C" void noteInterruption(int signal) {
    hasCome = signal;
}
} // namespace

Interruptions::Interruptions() {
    sigset_t wanted;
    sigemptyset(&wanted);

    struct sigaction note {};

    note.sa_handler = noteInterruption;
    hasCome = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaddset(&wanted, kSignals.at(i));
        sigaction(kSignals.at(i), &note, &actions_.at(i));
    }
    sigprocmask(SIG_BLOCK, &wanted, &mask_);
}

Interruptions::~Interruptions() {
    leave();
}

void Interruptions::leave() const {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals.at(i), &actions_.at(i), nullptr);
    }
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
}

int Interruptions::signal() const noexcept {
    return hasCome;
}

bool Interruptions::wait(int descriptor, Clock::time_point until) const {
    const auto left = std::max(until - Clock::now(), Clock::duration::zero());
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
    constexpr long long second = 1'000'000'000;
    const timespec time{static_cast<time_t>(nanoseconds / second), static_cast<long>(nanoseconds % second)};
    pollfd waiting{descriptor, POLLIN, 0};
    return ::ppoll(&waiting, 1, &time, &mask_) != 0;
}

} // namespace selftest
