#include "tests/support/waiting.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include <utility>

namespace support {

bool eventsRunUntil(const std::function<bool()>& condition) {
    const QDeadlineTimer limit(ScriptedServer::kTimeLimit);
    while (!condition() && !limit.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return condition();
}

struct WhenItHolds::Watch {
    QTimer timer;
    bool hasRun = false;
};

WhenItHolds::WhenItHolds(std::function<bool()> condition, std::function<void()> action)
    : watch_(std::make_unique<Watch>()) {
    QObject::connect(&watch_->timer, &QTimer::timeout, &watch_->timer,
                     [watch = watch_.get(), condition = std::move(condition), action = std::move(action)] {
                         if (condition()) {
                             watch->timer.stop();
                             watch->hasRun = true;
                             action();
                         }
                     });
    watch_->timer.start(1);
}

WhenItHolds::~WhenItHolds() {
    EXPECT_TRUE(watch_->hasRun) << "what was waited for never came";
}

bool WhenItHolds::hasRun() const {
    return watch_->hasRun;
}

void InsideAWait::insideTheWait(ScriptedServer& server, std::size_t lines, std::function<void()> action) {
    watch_ = std::make_unique<WhenItHolds>([&server, lines] { return server.commands().size() >= lines; },
                                           [this, &server, action = std::move(action)] {
                                               action();
                                               actionRan = true;
                                               server.release();
                                           });
}

} // namespace support
