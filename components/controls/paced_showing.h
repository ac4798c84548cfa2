#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>

namespace controls {

/**
 * Shows a value that changes far more often than a person can see. It shows the first change at once, and
 * those that follow together, about 60 times a second while an event loop runs. The last change is always
 * shown.
 */
class PacedShowing : public QObject {
  public:
    /** The function shows the value as it is at the time of the call. It must not throw. */
    explicit PacedShowing(std::function<void()> show);

    /** Call it when the value has changed. It costs next to nothing shortly after the last showing. */
    void changed() {
        if (timer_.isActive()) {
            waits_ = true;
        } else {
            showNow();
        }
    }

    /** Shows the value at once, for a change that must not wait, such as the last one. */
    void showNow();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    std::function<void()> show_;
    /** Runs for some 16 ms after each showing. */
    QBasicTimer timer_;
    /** True when the value has changed since the last showing. */
    bool waits_ = false;
};

} // namespace controls
