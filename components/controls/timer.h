#pragma once

#include <QTimer>

namespace controls {

/**
 * A timer with an interval and a switch. It runs while it is enabled and its interval is above 0. A negative
 * interval stops it, as 0 does.
 */
class Timer : public QTimer {
  public:
    explicit Timer(QObject* parent) : QTimer(parent) {}

    /** Sets the interval, in milliseconds. */
    void setPeriod(int milliseconds) {
        period_ = milliseconds;
        apply();
    }

    int period() const noexcept { return period_; }

    void setEnabled(bool enabled) {
        enabled_ = enabled;
        apply();
    }

    bool isEnabled() const noexcept { return enabled_; }

  private:
    void apply() {
        if (enabled_ && period_ > 0) {
            start(period_);
        } else {
            stop();
        }
    }

    int period_ = 0;
    bool enabled_ = false;
};

} // namespace controls
