#pragma once

#include "components/protocol/command_queue.h"
#include "components/smtplib/commands.h"
#include "components/smtplib/reply_reader.h"
#include "components/smtplib/wire_text.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace smtplib {

/** The server greeted; commands may be sent from now on. */
struct Greeted {
    Reply reply;
};

/** The server did what the command asks (2xx). */
struct Accepted {
    CommandKind kind = CommandKind::Quit;
    Reply reply;
};

/**
 * The server waits for what belongs to the command (3xx): after DATA for the message's text, after AUTH for
 * the response to a challenge.
 */
struct GoOn {
    CommandKind kind = CommandKind::Data;
    Reply reply;
};

/** The server said no: 4xx for now, 5xx for good. */
struct Refused {
    CommandKind kind = CommandKind::Greeting;
    Reply reply;
};

enum class FailureKind {
    /**
     * The bytes are not SMTP, or a reply came that no command had asked for or that does not fit its command.
     */
    OutOfStep,
    /** The server confirmed a message that it had not been given whole. */
    ConfirmedTooEarly,
    /** SMTP finds these two while it waits for the server; the session never does. */
    Lost,
    TimedOut
};

/** The session cannot go on; no event follows and the connection is of no more use. */
struct Failed {
    FailureKind kind = FailureKind::OutOfStep;
    /** The reply that does not fit; nothing when the bytes are not a reply. */
    std::optional<Reply> reply;
};

/**
 * The client's side of one SMTP session (RFC 5321) without any network: bytes go in, events and bytes to send
 * come out. How the network has cut the bytes into pieces changes nothing.
 *
 *     session.submit(mailCommand(...));
 *     connection.send(session.takeOutput());
 *     session.receive(bytes);
 *     while (auto event = session.nextEvent()) { ... }
 *
 * Commands queue, and replies belong to them in the order in which they were sent. After GoOn for DATA come
 * addText(), as often as needed, and the command endOfMessageCommand().
 */
class SmtpSession {
  public:
    using Command = smtplib::Command;
    using Event = std::variant<Greeted, Accepted, GoOn, Refused, Failed>;

    enum class State {
        Greeting, ///< The server has not greeted yet; nothing is sent.
        Commands, ///< The server takes commands.
        Text,     ///< The server takes the message's text, until the final dot.
        Over      ///< The server ends the session, QUIT was answered, or the session has failed.
    };

    /** Puts a command at the end of the queue. */
    void submit(Command command) { commands_.submit(std::move(command)); }

    /** How many commands may be outstanding at once; 1 unless the server has offered pipelining. */
    void setMaximumOutstanding(std::size_t commands) { commands_.setMaximumOutstanding(commands); }

    /** Drops the commands that have not been sent. */
    void forgetWaiting() { commands_.forgetWaiting(); }

    /** The number of commands that have been sent and not answered. */
    std::size_t outstanding() const noexcept { return commands_.outstanding(); }

    /** Adds text whose lines end in CR LF, as WireText makes it. Only in state Text. */
    void addText(std::string_view text) { stuffer_.add(text, text_); }

    /**
     * Returns the bytes to send now; empty before the greeting and while a reply is there that nothing asked
     * for.
     */
    std::string takeOutput();

    /** The commands in the last output, without the message's text. */
    const std::vector<std::string>& shownOutput() const noexcept { return commands_.shownOutput(); }

    /** What a reply may repeat and nobody may see: all that commands have hidden, and what is added to that.
     */
    protocol::Secrets& secrets() noexcept { return commands_.secrets(); }

    const protocol::Secrets& secrets() const noexcept { return commands_.secrets(); }

    /** Takes bytes from the server. */
    void receive(std::string_view bytes);

    /** Returns the next event of the bytes received so far, nothing when more bytes are needed. */
    std::optional<Event> nextEvent();

    State state() const noexcept { return state_; }

    /** The command that is to be answered next, or Greeting; nothing when there is none. */
    std::optional<CommandKind> awaited() const;

    /** True when the server can take a command now and its reply cannot be mistaken for another one. */
    bool canQuit() const noexcept;

    /** True when the server has sent bytes that have not become an event. */
    bool hasUnusedBytes() const noexcept { return reader_.hasBytes(); }

    /**
     * True from the time when takeOutput() has returned the final dot until the server has accepted or
     * refused the message.
     */
    bool mayHaveBeenSent() const noexcept { return mayHaveBeenSent_; }

  private:
    Event greeting(Reply reply);
    Event answer(Reply reply);
    Event unasked(Reply reply);
    Event refuse(CommandKind kind, Reply reply);
    Event fail(FailureKind kind, std::optional<Reply> reply = std::nullopt);

    State state_ = State::Greeting;
    protocol::CommandQueue<Command> commands_;
    ReplyReader reader_;
    DotStuffer stuffer_;
    /** Text that is to be sent before any command. */
    std::string text_;
    bool mayHaveBeenSent_ = false;
};

using Event = SmtpSession::Event;

/** The reply that made the event; nullptr when no reply did. */
const Reply* replyOf(const Event& event) noexcept;

} // namespace smtplib
