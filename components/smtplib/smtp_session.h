#pragma once

#include "components/smtplib/commands.h"
#include "components/smtplib/reply_reader.h"
#include "components/smtplib/wire_text.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace SMTPLib {

/** What an answer of the server is about. */
enum class Stage { Greeting, Hello, Sender, Recipient, Data, Message };

/** An answer came. Every one makes this event, and behind it one of the others where it decides something. */
struct Replied {
    Reply reply;
};

/** The server greeted and knows us; a message may begin. */
struct Opened {};

/** The server waits for the message's text. */
struct ContentWanted {};

/** The server has taken the message upon itself. */
struct Accepted {};

/** The server answered QUIT. */
struct FarewellSaid {};

/** The server said no: 4xx for now, 5xx for good. The message was not sent to anybody. */
struct Refused {
    Stage stage = Stage::Greeting;
    int code = 0;
};

/** The message is larger than the server announced to take; it was not asked. */
struct TooLarge {};

enum class FailureKind {
    /** The bytes are no SMTP, or an answer came that nothing had asked for or that cannot stand there. */
    OutOfStep,
    /** The server confirmed a message that it had not been given whole. */
    ConfirmedTooEarly,
    /** These two are found by whoever waits for the server, not by the session. */
    Lost,
    TimedOut
};

/** The session cannot go on; no event follows and the connection is of no more use. */
struct Failed {
    FailureKind kind = FailureKind::OutOfStep;
};

using Event = std::variant<Replied, Opened, ContentWanted, Accepted, FarewellSaid, Refused, TooLarge, Failed>;

/**
 * The client's side of one SMTP session (RFC 5321) without any network: bytes go in, events and bytes to send
 * come out. How the network has cut the bytes into pieces changes nothing.
 *
 *     Greeting -> Hello -> Idle -> Sender -> Recipients -> Data -> Content -> Confirmation -> Idle
 *
 * The session itself says EHLO, and HELO where EHLO is not known. begin() starts a message; after the event
 * ContentWanted come addContent(), as often as needed, and endContent(). The first recipient who is refused
 * ends the attempt before any text is sent. One command is under way at a time.
 */
class SmtpSession {
  public:
    enum class State {
        Greeting,     ///< The server has not greeted yet; nothing is sent.
        Hello,        ///< EHLO or HELO is under way.
        Idle,         ///< A message may begin.
        Sender,       ///< MAIL is under way.
        Recipients,   ///< RCPT is under way.
        Data,         ///< DATA is under way.
        Content,      ///< The server waits for text.
        Confirmation, ///< The final dot is on its way.
        Refused,      ///< The server said no; only quit() is left.
        Farewell,     ///< QUIT is under way.
        Over          ///< The session has ended or failed.
    };

    /** The literal is the argument of EHLO; addressLiteral() makes it. */
    explicit SmtpSession(std::string addressLiteral = "[127.0.0.1]") : literal_(std::move(addressLiteral)) {}

    /** Begins a message. Only in state Idle. */
    void begin(Envelope envelope);

    /** Adds text whose lines end in CR LF, as WireText makes it. Only in state Content. */
    void addContent(std::string_view text);

    /** The text is complete; the final dot follows. Only in state Content. */
    void endContent();

    /** True when the server will understand QUIT here. */
    bool canQuit() const noexcept;

    /** Says QUIT. Only when canQuit(). */
    void quit();

    /** Returns what is to be sent now; nothing while the server speaks out of turn. */
    std::string takeOutput();

    /** The commands in the last output, as they may be shown: the message's text is not among them. */
    const std::vector<std::string>& shownOutput() const noexcept { return shownOutput_; }

    /** Takes bytes from the server. */
    void receive(std::string_view bytes);

    /** Returns the next event of the bytes received so far, nothing when more bytes are needed. */
    std::optional<Event> nextEvent();

    State state() const noexcept { return state_; }

    /** True when the server has sent bytes that no event has been made of. */
    bool hasUnusedBytes() const noexcept { return reader_.hasBytes(); }

    /** True from the moment on when the final dot was given out until the server has answered it properly. */
    bool mayHaveBeenSent() const noexcept { return mayHaveBeenSent_; }

  private:
    void submit(std::string command);
    std::optional<Event> eventOf(const Reply& reply);
    std::optional<Event> eventOfUnasked(const Reply& reply);
    std::optional<Event> accept(const Reply& reply);
    void submitRecipient();
    Event refuse(int code);
    Event fail(FailureKind kind);
    Stage stage() const noexcept;

    std::string literal_;
    State state_ = State::Greeting;
    ReplyReader reader_;
    Extensions extensions_;
    /** EHLO was refused, HELO is under way. */
    bool saidHelo_ = false;
    Envelope envelope_;
    std::size_t nextRecipient_ = 0;
    DotStuffer stuffer_;

    std::string output_;
    std::vector<std::string> waitingToBeShown_;
    std::vector<std::string> shownOutput_;
    /** A command has been submitted and not been given out. */
    bool commandWaits_ = false;
    /** The server owes an answer. */
    bool answerDue_ = true;
    bool mayHaveBeenSent_ = false;
    /** An event that follows the one given out last. */
    std::optional<Event> following_;
};

} // namespace SMTPLib
