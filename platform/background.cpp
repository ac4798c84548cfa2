#include "platform/background.h"

#include "platform/nested_wait.h"

#include <QEventLoop>
#include <QMetaObject>

#include <atomic>
#include <exception>
#include <thread>

namespace platform {

void runInBackground(const std::function<void()>& work) {
    const NestedWait wait;
    QEventLoop loop;
    std::exception_ptr problem;
    std::atomic<bool> done = false;
    std::thread worker([&] {
        try {
            work();
        } catch (...) {
            problem = std::current_exception();
        }
        done = true;
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    // A quit that comes before the loop runs is delivered by the loop itself, so none is missed.
    while (!done) {
        loop.exec();
    }
    worker.join();
    if (problem) {
        std::rethrow_exception(problem);
    }
}

} // namespace platform
