#pragma once

#include "components/poplib/commands.h"
#include "components/protocol/command_queue.h"
#include "components/protocol/line_buffer.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace poplib {

/** The server greeted; commands may be sent from now on. */
struct Greeted {
    std::string text;
};

/**
 * The server answered a command with +OK. For TOP, RETR, UIDL and CAPA the lines of the multi-line response
 * follow as events of their own.
 */
struct Accepted {
    CommandKind kind = CommandKind::Quit;
    /** What stands after "+OK", without the space between. */
    std::string text;
};

/** The server answered a command with -ERR. The session is in step and goes on. */
struct Refused {
    CommandKind kind = CommandKind::Quit;
    std::string text;
};

/** The server asks for more of a command: after AUTH, for the response to this challenge (RFC 5034). */
struct GoOn {
    CommandKind kind = CommandKind::Auth;
    /** What stands after "+", without the space between. */
    std::string text;
};

/**
 * One line of a header. A folded continuation line has an empty field, and its value keeps the space it
 * starts with.
 */
struct HeaderLine {
    std::string field;
    std::string value;
    /** The line was longer than a listing keeps, and this is its first part. */
    bool cut = false;
    /**
     * The colon between field and value, with the one space or tab behind it that is not part of the value.
     */
    std::string_view separator = {};
};

/** One line of a message's body, without its CRLF and without a stuffed dot (RFC 1939 section 3). */
struct BodyLine {
    /** Bytes of the message so far: unstuffed, line ends counted. */
    std::int64_t bytesTransferred = 0;
    std::string text;
};

/** One line of a UIDL, CAPA or LIST response. */
struct ListingLine {
    std::string text;
};

/** The last line of a multi-line response, to TOP, RETR, UIDL or CAPA, has come. */
struct ResponseEnded {
    CommandKind kind = CommandKind::Retr;
};

enum class FailureKind {
    /** The bytes are not POP3, or a reply came that no command had asked for. */
    OutOfStep,
    /** The response is larger than the limit for it. */
    TooLarge
};

/** The session cannot go on; no event follows and the connection is of no more use. */
struct Failed {
    FailureKind kind = FailureKind::OutOfStep;
};

/**
 * The client's side of one POP3 session (RFC 1939) without any network: bytes go in, events and bytes to send
 * come out. How the network has cut the bytes into pieces changes nothing.
 *
 *     session.submit(statCommand());
 *     connection.send(session.takeOutput());
 *     session.receive(bytes);
 *     while (auto event = session.nextEvent()) { ... }
 *
 * Commands queue. Replies belong to commands in the order in which these were sent, so several may be
 * outstanding at once where the server can do that (RFC 2449 section 6.6).
 */
class Pop3Session {
  public:
    using Command = poplib::Command;
    using Event = std::variant<Greeted, Accepted, Refused, GoOn, HeaderLine, BodyLine, ListingLine,
                               ResponseEnded, Failed>;

    enum class State {
        Greeting,      ///< The server has not greeted yet; nothing is sent.
        Authorization, ///< Before the password is accepted.
        Transaction,   ///< Logged on.
        Over           ///< QUIT was accepted, or the session has failed.
    };

    /** Longest status line, in bytes. RFC 2449 section 4 allows 512; some servers send longer ones. */
    static constexpr std::size_t kMaximumReplyBytes = 4096;
    /** What is kept of a line while listing, in bytes; the rest of it is dropped. */
    static constexpr std::size_t kMaximumListingLineBytes = 1U << 20U;
    /**
     * Largest response while listing, in bytes. Lines beyond the wanted ones are only counted, so the client
     * reads past a message of any size that LIST can report (31 bits). A longer response is taken for
     * endless.
     */
    static constexpr std::int64_t kMaximumListingBytes = std::numeric_limits<std::int32_t>::max();
    /** Largest response to CAPA, in bytes. */
    static constexpr std::int64_t kMaximumCapabilitiesBytes = 64 << 10;
    /** Largest message that is fetched whole, in bytes. */
    static constexpr std::int64_t kMaximumMessageBytes = 256LL << 20;

    explicit Pop3Session(std::int64_t maximumListingBytes = kMaximumListingBytes)
        : maximumListingBytes_(maximumListingBytes) {}

    /** Puts a command at the end of the queue. */
    void submit(Command command) { commands_.submit(std::move(command)); }

    /** How many commands may be outstanding at once; 1 unless the server has offered pipelining. */
    void setMaximumOutstanding(std::size_t commands) { commands_.setMaximumOutstanding(commands); }

    /**
     * Returns the bytes to send now; empty before the greeting and after bytes that no command had asked for.
     */
    std::string takeOutput();

    /** The commands in the last output, with secrets hidden. */
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

    /** True while the lines of a multi-line response are coming. */
    bool isInResponse() const noexcept { return inResponse_; }

    /** True when the server has sent bytes that have not become an event. */
    bool hasUnusedBytes() const noexcept { return input_.size() > 0; }

    /** The number of commands that have been sent and not answered. */
    std::size_t outstanding() const noexcept { return commands_.outstanding(); }

    /**
     * A number that grows with every complete response and with every kBytesOfProgress bytes. While it grows,
     * the server is at work, even when one response takes long. A line now and then is no progress.
     */
    std::uint64_t progress() const noexcept { return answers_ + bytes_ / kBytesOfProgress; }

    static constexpr std::uint64_t kBytesOfProgress = 4096;

  private:
    std::optional<Event> nextReply();
    bool awaitsAuth() const;
    std::optional<Event> nextResponseLine();
    std::size_t wantedLineBytes() const noexcept;
    Event accept(std::string_view text);
    Event fail(FailureKind kind);
    std::size_t lineBytes(const std::optional<std::string_view>& line) const noexcept;
    std::int64_t maximumResponseBytes() const noexcept;
    std::optional<Event> responseLine(std::string_view line);

    std::int64_t maximumListingBytes_;
    State state_ = State::Greeting;
    protocol::CommandQueue<Command> commands_;
    protocol::LineBuffer input_;
    /** Bytes came that no outstanding command had asked for. */
    bool spokeOutOfTurn_ = false;
    std::uint64_t answers_ = 0;
    std::uint64_t bytes_ = 0;

    /** The first outstanding command has been accepted, and the lines of its response are coming. */
    bool inResponse_ = false;
    bool inBody_ = false;
    std::int64_t responseBytes_ = 0;
    std::int32_t bodyLines_ = 0;
};

using Event = Pop3Session::Event;

} // namespace poplib
