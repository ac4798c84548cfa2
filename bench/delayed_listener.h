#pragma once

#include "mailserver/conversation.h"
#include "platform/file_descriptor.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace bench {

/**
 * A server whose answers arrive as over a long line: each leaves a fixed time after the commands
 * came, and commands that came together are answered together. It sleeps while nothing is due.
 */
class DelayedListener {
  public:
    using Clock = std::chrono::steady_clock;
    using MakeConversation = std::function<std::unique_ptr<mailserver::Conversation>()>;
    /** Is told of the end of a session, with the times that commands arrived: the client's round trips. */
    using Ended = std::function<void(std::uint64_t roundTrips)>;

    /** Listens at the address. \throws std::system_error when no port can be had there. */
    DelayedListener(MakeConversation makeConversation, std::chrono::milliseconds delay, Ended ended,
                    const char* address = "127.0.0.1");

    std::uint16_t port() const noexcept { return port_; }

    /** Serves until the standard input ends. \throws std::system_error when the system refuses to go on. */
    void serve();

  private:
    struct Answer {
        Clock::time_point due;
        std::string bytes;
    };

    struct Session {
        Session(int socket, std::unique_ptr<mailserver::Conversation> held)
            : connection(socket), conversation(std::move(held)) {}

        platform::FileDescriptor connection;
        std::unique_ptr<mailserver::Conversation> conversation;
        std::deque<Answer> answers;
        std::uint64_t roundTrips = 0;
        bool lost = false;
    };

    /** Time until the next answer is due; the largest time there is when none is. */
    std::chrono::nanoseconds untilNextAnswer() const;
    void accept();
    void receive(Session& session);
    static void sendDue(Session& session);
    void removeEnded();

    MakeConversation makeConversation_;
    std::chrono::milliseconds delay_;
    Ended ended_;
    platform::FileDescriptor listening_;
    std::uint16_t port_ = 0;
    std::list<Session> sessions_;
    /** What a read fills; a message is taken in large pieces. */
    std::string buffer_;
};

} // namespace bench
