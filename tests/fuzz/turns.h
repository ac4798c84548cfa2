#pragma once

#include "components/protocol/exchange.h"
#include "platform/runtime_error.h"
#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fuzz {

/**
 * A server that sends one turn after the other, whatever the client sends. A zero byte ends a turn; the
 * client sends its output between two. Turns come in pieces of these sizes, or whole when there are none.
 */
template <class Session>
class Turns : public protocol::Exchange<Session> {
  public:
    using Event = typename protocol::Exchange<Session>::Event;

    Turns(std::string_view bytes, const std::vector<std::size_t>& sizes, int errorWhenLost)
        : bytes_(bytes), sizes_(sizes), errorWhenLost_(errorWhenLost) {}

    Session& session() override { return session_; }

    void encrypt() override {
        if (session_.hasUnusedBytes() || !events_.empty()) {
            throw platform::RuntimeError(platform::errors::EncryptionFailed);
        }
        sentInClear_ = sent.size();
        sent += "(encryption begins)\r\n";
    }

    Event next() override {
        while (events_.empty()) {
            sent += session_.takeOutput();
            if (outputTaken) {
                outputTaken(session_);
            }
            if (bytes_.empty()) {
                throw platform::RuntimeError(errorWhenLost_);
            }
            hearTurn();
        }
        Event event = std::move(events_.front());
        events_.pop_front();
        return event;
    }

    /** What was sent before the encryption; all of it without one. */
    std::string_view sentInClear() const { return std::string_view(sent).substr(0, sentInClear_); }

    std::string sent;
    std::function<void(const Session&)> outputTaken;

  private:
    void hearTurn() {
        const std::size_t end = std::min(bytes_.find('\0'), bytes_.size());
        for (std::string_view turn = bytes_.substr(0, end); !turn.empty(); ++piece_) {
            const std::size_t size = sizes_.empty() ? turn.size() : sizes_[piece_ % sizes_.size()];
            session_.receive(turn.substr(0, size));
            while (auto event = session_.nextEvent()) {
                events_.push_back(*std::move(event));
            }
            turn.remove_prefix(std::min(size, turn.size()));
        }
        bytes_.remove_prefix(std::min(end + 1, bytes_.size()));
    }

    std::string_view bytes_;
    const std::vector<std::size_t>& sizes_;
    int errorWhenLost_;
    std::size_t piece_ = 0;
    std::size_t sentInClear_ = std::string::npos;
    Session session_;
    std::deque<Event> events_;
};

} // namespace fuzz
