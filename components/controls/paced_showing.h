#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>

namespace controls {

/**
 * Shows what changes far more often than anybody can see: the first change at once, those that follow
 * together, about 60 times a second while an event loop runs. The last one is shown in any case.
 */
class PacedShowing : public QObject {
  public:
    /** The function shows whatever is true when it is called. It must not throw. */
    explicit PacedShowing(std::function<void()> show);

    /** There is something new to show. Costs next to nothing while the last showing is fresh. */
    void changed() {
        if (timer_.isActive()) {
            waits_ = true;
        } else {
            showNow();
        }
    }

    /** For a change that everybody is to see at once, such as the last one. */
    void showNow();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    std::function<void()> show_;
    /** Runs while the last showing is fresh. */
    QBasicTimer timer_;
    /** Something has changed since the last showing. */
    bool waits_ = false;
};

} // namespace controls
