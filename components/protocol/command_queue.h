#pragma once

#include "components/protocol/secrets.h"

#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace protocol {

/**
 * The commands of one session, in their order: those that wait to be sent, and those that are outstanding:
 * sent but not answered. Replies come in the order in which the commands were sent. A command has the two
 * texts of CommandText.
 */
template <class Command>
class CommandQueue {
  public:
    void submit(Command command) { waiting_.push_back(std::move(command)); }

    /** How many commands may be outstanding at once; 1 unless told otherwise. */
    void setMaximumOutstanding(std::size_t commands) { maximumOutstanding_ = commands; }

    bool hasWaiting() const noexcept { return !waiting_.empty(); }

    /** Drops the commands that have not been sent. */
    void forgetWaiting() { waiting_.clear(); }

    /** The command that is sent next. Call it only when one waits. */
    const Command& firstWaiting() const { return waiting_.front(); }

    /** The number of commands that have been sent and not answered. */
    std::size_t outstanding() const noexcept { return outstanding_.size(); }

    /** The command that the next reply belongs to. Call it only when one is outstanding. */
    const Command& first() const { return outstanding_.front(); }

    /** Removes the command that has been answered, and returns it. Call it only when one is outstanding. */
    Command takeFirst() {
        Command command = std::move(outstanding_.front());
        outstanding_.pop_front();
        return command;
    }

    /** Returns what is to be sent now; the commands in it are outstanding from here on. */
    std::string takeOutput() {
        std::string output;
        shownOutput_.clear();
        while (!waiting_.empty() && outstanding_.size() < maximumOutstanding_) {
            output.append(waiting_.front().sent).append("\r\n");
            shownOutput_.push_back(waiting_.front().shown);
            secrets_.addHiddenIn(waiting_.front());
            outstanding_.push_back(std::move(waiting_.front()));
            waiting_.pop_front();
        }
        return output;
    }

    /** Sends nothing this time: the waiting commands stay, and shownOutput() is empty. */
    void holdOutput() { shownOutput_.clear(); }

    /** The commands in the last output, as they may be shown. */
    const std::vector<std::string>& shownOutput() const noexcept { return shownOutput_; }

    /** What the commands that were sent have hidden, and what has been added to that. */
    Secrets& secrets() noexcept { return secrets_; }

    const Secrets& secrets() const noexcept { return secrets_; }

  private:
    std::deque<Command> waiting_;
    std::deque<Command> outstanding_;
    std::size_t maximumOutstanding_ = 1;
    std::vector<std::string> shownOutput_;
    Secrets secrets_;
};

} // namespace protocol
