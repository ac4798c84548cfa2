#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

namespace support {

/**
 * Beats every 10 milliseconds on the windows' own thread for as long as it lives. The longest pause between
 * two beats is how long a window could not be moved, repainted or typed into.
 */
class Heartbeat {
  public:
    Heartbeat() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { beat(); });
        clock_.start();
        timer_.start(10);
    }

    /** Milliseconds, the pause that is still going on included. */
    qint64 longestPause() {
        beat();
        return longest_;
    }

    /** How often it has beaten. */
    int beats() const { return beats_; }

  private:
    void beat() {
        longest_ = std::max(longest_, clock_.restart());
        ++beats_;
    }

    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longest_ = 0;
    int beats_ = 0;
};

} // namespace support
