#pragma once

#include "mailserver/pop3_conversation.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <list>
#include <string>

namespace bench {

/** A file descriptor, closed with its owner. */
class Descriptor {
  public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}

    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const noexcept { return number_; }

  private:
    int number_;
};

/**
 * A POP3 server on 127.0.0.1 whose answers arrive as over a long line: each leaves a fixed time after the
 * commands came, and commands that came together are answered together. It sleeps while nothing is due.
 */
class DelayedListener {
  public:
    using Clock = std::chrono::steady_clock;

    /** \throws std::system_error when no port can be had. */
    DelayedListener(mailserver::Mailbox& mailbox, std::chrono::milliseconds delay);

    std::uint16_t port() const noexcept { return port_; }

    /**
     * Serves until the standard input ends. When a session ends, the times that commands arrived in it, each
     * a round trip of the client, are written as a line to the standard output.
     * \throws std::system_error when the system refuses to go on.
     */
    void serve();

  private:
    struct Answer {
        Clock::time_point due;
        std::string bytes;
    };

    struct Session {
        Session(int socket, mailserver::Mailbox& mailbox) : connection(socket), conversation(mailbox) {}

        Descriptor connection;
        mailserver::Pop3Conversation conversation;
        std::deque<Answer> answers;
        std::uint64_t roundTrips = 0;
        bool lost = false;
    };

    /** Time until the next answer is due; the largest time there is when none is. */
    std::chrono::nanoseconds untilNextAnswer() const;
    void accept();
    void receive(Session& session) const;
    static void sendDue(Session& session);

    mailserver::Mailbox& mailbox_;
    std::chrono::milliseconds delay_;
    Descriptor listening_;
    std::uint16_t port_ = 0;
    std::list<Session> sessions_;
};

} // namespace bench
