#include "components/netcodelib/write_behind.h"

#include <utility>

namespace netcodelib {

WriteBehind::WriteBehind(std::function<void(std::string_view)> write)
    : write_(std::move(write)), thread_([this] { run(); }) {}

WriteBehind::~WriteBehind() {
    {
        const std::lock_guard lock(mutex_);
        waits_ = false;
    }
    end();
}

void WriteBehind::write(std::string& bytes) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waits_; });
    if (problem_) {
        std::rethrow_exception(problem_);
    }
    piece_.swap(bytes);
    waits_ = true;
    lock.unlock();
    changed_.notify_all();
    bytes.clear();
}

void WriteBehind::finish() {
    end();
    if (problem_) {
        std::rethrow_exception(problem_);
    }
}

void WriteBehind::end() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

/** Runs on the thread: writes each waiting piece, until the end or until a write fails. */
void WriteBehind::run() {
    std::string piece;
    for (;;) {
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return waits_ || ended_; });
            if (!waits_) {
                return;
            }
            piece.swap(piece_);
            waits_ = false;
        }
        changed_.notify_all();
        try {
            write_(piece);
        } catch (...) {
            {
                const std::lock_guard lock(mutex_);
                problem_ = std::current_exception();
                waits_ = false;
            }
            changed_.notify_all();
            return;
        }
    }
}

} // namespace netcodelib
