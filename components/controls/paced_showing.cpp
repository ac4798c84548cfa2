#include "components/controls/paced_showing.h"

#include <utility>

namespace controls {

namespace {
constexpr int kFreshMs = 16;
} // namespace

PacedShowing::PacedShowing(std::function<void()> show) : show_(std::move(show)) {}

void PacedShowing::showNow() {
    waits_ = false;
    timer_.start(kFreshMs, this);
    show_();
}

void PacedShowing::timerEvent(QTimerEvent* /*event*/) {
    if (waits_) {
        showNow();
    } else {
        timer_.stop();
    }
}

} // namespace controls
