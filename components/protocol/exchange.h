#pragma once

#include <utility>

namespace protocol {

/**
 * A session and whatever brings its bytes: a connection in the program, recorded lines in a test. What is to
 * be asked, in which order, stands in plans: functions that ask through an exchange, and know of no network.
 */
template <class Session>
class Exchange {
  public:
    using Command = typename Session::Command;
    using Event = typename Session::Event;

    Exchange() = default;
    virtual ~Exchange() = default;
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    virtual Session& session() = 0;

    /**
     * Sends what waits to be sent, and waits for the session's next event.
     * \throws RuntimeError when the session has failed, or the server is lost or silent.
     */
    virtual Event next() = 0;

    /** Sends the command and waits for the event that its reply makes. Only while no other is outstanding. */
    Event ask(Command command) {
        session().submit(std::move(command));
        return next();
    }
};

} // namespace protocol
