#pragma once

#include <utility>
#include <vector>

namespace protocol {

/**
 * A session together with the source of its bytes: a connection in the program, recorded lines in a test.
 * Plans are functions that decide which commands to send, and in which order. They use an exchange and know
 * nothing of the network.
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
     * \throws RuntimeError when the session has failed, or the connection is lost, or the server does not
     * reply in time.
     */
    virtual Event next() = 0;

    /**
     * Encrypts the connection under the session. What the session has learnt in clear must not count
     * afterwards. Call it only while no command is outstanding.
     * \throws RuntimeError 20322 to 20325: the server's certificate, or the encryption itself, has failed, or
     * the server has sent bytes that were not asked for.
     */
    virtual void encrypt() = 0;

    /**
     * Sends the command and waits for the event that its reply makes. Call it only while no other command is
     * outstanding but those of askAhead().
     */
    virtual Event ask(Command command) {
        session().submit(std::move(command));
        return next();
    }

    /**
     * Tells what will be asked next, in this order, so that an exchange with a server that can do it may send
     * all of it at once. Commands that change something on the server do not belong here.
     */
    virtual void askAhead(std::vector<Command> /*commands*/) {}

    /** next() for a reply that is due at once: a shorter wait counts as too long. */
    virtual Event nextSoon() { return next(); }
};

} // namespace protocol
