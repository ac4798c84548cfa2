#include "bench/windows/stopwatch.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QPointer>
#include <QWidget>

#include <ctime>
#include <stdexcept>
#include <utility>

namespace bench {

namespace {
constexpr std::chrono::seconds kTimeout{60};

std::chrono::duration<double> processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}
} // namespace

Stopwatch::Stopwatch(std::function<bool(QWidget&)> counts, std::function<void(QWidget&)> afterwards)
    : counts_(std::move(counts)), afterwards_(std::move(afterwards)) {
    qApp->installEventFilter(this);
    processorAtStart_ = processorTime();
    start_ = Clock::now();
}

bool Stopwatch::eventFilter(QObject* receiver, QEvent* event) {
    if (!painted_ && event->type() == QEvent::Paint && receiver->isWidgetType()) {
        auto& widget = static_cast<QWidget&>(*receiver);
        if (counts_(widget)) {
            painted_ = true;
            // By then the whole window has been painted and handed over.
            QMetaObject::invokeMethod(
                this, [this, kept = QPointer(&widget)] { take(*kept); }, Qt::QueuedConnection);
        }
    }
    return false;
}

void Stopwatch::take(QWidget& widget) {
    // Asks the X server something and waits for the answer, which comes after the picture.
    QGuiApplication::sync();
    taken_ = {Clock::now() - start_, processorTime() - processorAtStart_};
    done_ = true;
    afterwards_(widget);
}

Taken Stopwatch::wait() {
    const QDeadlineTimer deadline(kTimeout);
    while (!done_) {
        if (deadline.hasExpired()) {
            throw std::runtime_error("nothing was painted");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1000);
    }
    return taken_;
}

} // namespace bench
