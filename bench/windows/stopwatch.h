#pragma once

#include <QObject>

#include <chrono>
#include <functional>

class QWidget;

namespace bench {

/** What somebody waited for, and what the process worked for it, all its threads together. */
struct Taken {
    std::chrono::duration<double> wait{};
    std::chrono::duration<double> processor{};
};

/**
 * Takes the time from its making until a widget that counts has been painted and the X server has got the
 * picture. The application must have an event loop running by then.
 */
class Stopwatch : public QObject {
  public:
    /**
     * `counts` is asked at every painting. `afterwards` runs from the event loop once the time is taken: a
     * box has to be answered, for instance.
     */
    explicit Stopwatch(
        std::function<bool(QWidget&)> counts, std::function<void(QWidget&)> afterwards = [](QWidget&) {});

    /** Runs an event loop until the time is taken. \throws std::runtime_error when nothing was painted. */
    Taken wait();

  protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    void take(QWidget& widget);

    using Clock = std::chrono::steady_clock;

    std::function<bool(QWidget&)> counts_;
    std::function<void(QWidget&)> afterwards_;
    Clock::time_point start_;
    std::chrono::duration<double> processorAtStart_;
    Taken taken_;
    bool painted_ = false;
    bool done_ = false;
};

} // namespace bench
