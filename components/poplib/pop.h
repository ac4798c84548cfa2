#pragma once

#include "components/poplib/listed_mailbox.h"
#include "components/poplib/log_on_plan.h"
#include "components/poplib/pop3_session.h"
#include "components/protocol/direction.h"
#include "components/protocol/request_guard.h"
#include "components/transport/connection.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace poplib {

/** The request codes of the component. */
enum class Request : std::uint8_t {
    ConnectAndLogOn = 1,
    LogOffAndDisconnect = 2,
    RetrieveCurrentMessage = 3,
    DeleteCurrentMessage = 4
};

using protocol::Direction;

/** How long the component waits. Tests shorten these times. */
struct Timeouts {
    /**
     * For the name look-up and the connection together, for each response, and for every
     * Pop3Session::kBytesOfProgress bytes of a long response.
     */
    std::chrono::milliseconds answer{60'000};
    /** For a whole log-off when no message is marked as deleted. */
    std::chrono::milliseconds quit{5'000};
    /** For a reply that a server owes at once, if it answers commands that are sent ahead. */
    std::chrono::milliseconds soon{5'000};
};

/**
 * The POP3 client (RFC 1939). The life of a session:
 *
 *     pop.setMailServer(...); pop.setLoginUser(...); pop.setLoginPassword(...);
 *     pop.issueRequest(Request::ConnectAndLogOn);   // CAPA, STLS, AUTH or USER and PASS, STAT
 *     pop.messageCount(); pop.mailboxSize();
 *     pop.setCurrentMessage(1);
 *     pop.currentMessageSize();                     // LIST
 *     pop.setBodyLineLimit(25);
 *     pop.issueRequest(Request::RetrieveCurrentMessage); // TOP or RETR; raises Header and Transfer
 *     pop.issueRequest(Request::LogOffAndDisconnect);    // QUIT
 *
 * A request blocks its caller, while the windows stay alive, and raises its events on the caller's stack: an
 * error thrown by a listener reaches the caller of the request.
 *
 * A retrieval with a body line limit lists a message: over-long lines are cut, body lines beyond the limit
 * are only counted, and of very large headers only a part is raised (ListingAllowance). When memory runs out
 * for one message, its remaining events are left out, lastMessageFitted() says so, and the session goes on.
 *
 * A message is deleted only when it was listed before, with its size and first lines, and when its number
 * still names it. The client remembers which message each number named, follows its own deletions, and
 * compares size, header, first lines and, where there is one, the unique-id. No deletion counts as done
 * before the server has confirmed the log-off. A log-off without deletions raises no error.
 *
 * Every request can raise a RuntimeError: 20102 when another request is running, for a log-on while a session
 * is open, and when the server asks to try again later; 20172 when the server refuses the name or the
 * password, or these cannot be sent at all, or the server does not prove that it knows the password where it
 * should; 20173 when it says that no log-on can succeed; 20321 when encryption is demanded and not offered;
 * 20322 to 20325 when the encryption fails; 26002, 25062, 25052 when the name is unknown, the connection
 * refused, the network unreachable; 20302 for a time-out, a lost connection and replies that are not POP3; 6
 * for a number that does not fit; 7 for a message that is too large or has no end; 20312 for the deletion of
 * a number that may name another message by now; 20332 for a deletion that the server refuses; 20352 for a
 * request that is given up (giveUp); 20342 when the server refuses a whole message (one that is listed is
 * then without its lines). After any error except a refused log-on the session is closed. After a refused
 * log-on it stays open until the log-off, and until then a second log-on raises 20102.
 */
class POP : private Exchange {
  public:
    static constexpr transport::DefaultPorts kDefaultPorts{110, 995, 110};

    /** Raised for every header line; `field` is empty for a folded continuation line. */
    std::function<void(const std::string& field, const std::string& value)> Header;
    /** Raised for every header line of a whole message, before Header: the line as received, without CRLF. */
    std::function<void(const std::string& line)> RawHeader;
    /** Raised for every body line, with the bytes of this message received so far. */
    std::function<void(std::int32_t bytesTransferred, const std::string& text)> Transfer;
    /** Raised for every command and every status line. A password is never in it, whoever says it. */
    std::function<void(Direction direction, const std::string& message)> PITrail;

    /** Raised at each log-on, once it is known how the connection is protected, before any other event. */
    std::function<void(const transport::Protection& protection)> Protected;

    explicit POP(Timeouts timeouts = {}) : timeouts_(timeouts) {}

    void setLoginUser(std::string user) { loginUser_ = std::move(user); }

    void setLoginPassword(std::string password) { loginPassword_ = std::move(password); }

    /** As transport::parseServerName() reads it. */
    void setMailServer(const QString& server) { mailServer_ = server; }

    void setTimeouts(Timeouts timeouts) { timeouts_ = timeouts; }

    /** Limits::listingBytes applies from the next log-on, Limits::wholeMessageBytes at once. */
    void setLimits(Limits limits) { limits_ = limits; }

    void issueRequest(Request request);

    /**
     * Opens a session as a log-on does, and ends it where the log-on would begin. Returns what the server has
     * said until then. Blocks and raises as a log-on does.
     */
    Introduction introduce();

    /**
     * Hands over the header and the first body lines of the current message, and nothing else happens to it:
     * they come by TOP, never by RETR, after which a server may take the message for read. False when the
     * server refuses. Blocks and raises as a request does.
     */
    bool look(std::int32_t bodyLines, const ListedMailbox::TakeLine& take);

    /** The certificate of the server of the last connection; nothing where there was none. */
    std::optional<transport::Certificate> certificate() const { return connection_.certificate(); }

    /**
     * Logs off after a failure that has been reported, if a session is open. Errors of the log-off are
     * dropped.
     */
    void leave() noexcept;

    /**
     * Ends the request that waits for the server further down the caller's stack: the connection is closed at
     * once, and the request raises 20352. Does nothing when no request runs.
     */
    void giveUp();

    /** True while a request runs further down the caller's stack. */
    bool isRunning() const noexcept { return requests_.isRunning(); }

    /** Bytes of all messages, as the server reported them at log-on. */
    std::int32_t mailboxSize() const noexcept { return totals_.bytes; }

    /** Number of messages, as the server reported it at log-on. */
    std::int16_t messageCount() const noexcept { return totals_.messages; }

    void setCurrentMessage(std::int16_t number) noexcept { currentMessage_ = number; }

    /**
     * Asks the server for the size of the current message, in bytes (LIST n); nothing when the server refuses
     * LIST. Blocks and raises as a request does.
     */
    std::optional<std::int32_t> currentMessageSize();

    /** Body lines that a retrieval fetches with the header; 0 means the whole message. */
    void setBodyLineLimit(std::int32_t lines) noexcept { bodyLineLimit_ = lines; }

    /** Whether the listeners keep the lines of a listing, which are limited then; they do at first. */
    void setLinesAreKept(bool kept) noexcept { listed_.setLinesAreKept(kept); }

    /** Whether the messages are going to be listed after the log-on that follows. */
    void setListing(bool listing) noexcept { listing_ = listing; }

    /**
     * Tells that the messages from `first` to `last` are going to be listed with these body lines: for each
     * its size, then its retrieval. A server that can do it is asked for all of that at once and before this
     * returns; what the requests do and raise stays the same, but for messages that have to be fetched whole.
     */
    void listAhead(std::int16_t first, std::int16_t last, std::int32_t bodyLines);

    /** The same for opening one message: its size, its retrieval, the log-off. */
    void openAhead(std::int16_t number);

    /**
     * Messages without their lines, since the server has refused TOP for them in the midst of a listing. They
     * are fetched whole when they are retrieved once more, behind the listing. Where the server was asked to
     * end the session behind it, another one is opened for them; should that fail, there are none. Blocks as
     * a log-on does then, and raises 20102 while another request is running and 20352 when it is given up.
     */
    std::vector<std::int16_t> messagesToFetchLater();

    /** Forgets what was learnt of the server: it is asked anew, and taken for one that can do what it offers.
     */
    void forgetServer() noexcept {
        known_ = {};
        isWithoutCapabilities_ = false;
        isWithoutPipelining_ = false;
        isWithoutQuitAhead_ = false;
    }

    /** False when memory ran out for the message listed last: some of its events were not raised. */
    bool lastMessageFitted() const noexcept { return listed_.lastMessageFitted(); }

    /** Round trips to the server since the last log-on: how often commands were sent. */
    std::uint64_t roundTrips() const noexcept { return roundTrips_; }

  private:
    /** A log-on may have to start again three times: without CAPA, in clear, without pipelining. */
    static constexpr int kMaximumConnections = 4;
    /** Most commands that are outstanding at once. */
    static constexpr std::size_t kMaximumAhead = 512;

    void asRequest(const std::function<void()>& action);
    void rememberTrouble(int error);
    void logOn();
    template <class Plan>
    auto overConnections(const Plan& plan);
    bool hasSession() const;
    void connect(const transport::ServerName& server);
    void startAgain(const LogOnTerms& terms);
    void logOff();
    void retrieve();
    void deleteCurrent();
    void raiseRawHeader(const Event& event) const;
    void raise(const Event& event);

    // pop_dialogue.cpp
    Pop3Session& session() override { return session_; }

    void encrypt() override;
    Event next() override;
    Event nextSoon() override;
    Event awaitEvent();
    bool sendQueued();
    void receive();
    void raiseStatus(const Event& event) const;
    void waitNoLongerThan(std::chrono::milliseconds time);
    void renewDeadline();
    void closeSession();

    // pop_ahead.cpp
    Event ask(Command command) override;
    void askAhead(std::vector<Command> commands) override;
    void dropAnswerAhead();
    bool isToldToEnd() const;
    void logOnOnceMore();

    Timeouts timeouts_;
    Limits limits_;
    QString mailServer_;
    std::string loginUser_;
    std::string loginPassword_;
    std::int16_t currentMessage_ = 0;
    std::int32_t bodyLineLimit_ = 0;
    MailboxTotals totals_;
    ListedMailbox listed_;

    transport::Connection connection_;
    Pop3Session session_;
    /**
     * When the wait for the server ends. Each command and each progress moves it on, but not in a log-off
     * without deletions.
     */
    QDeadlineTimer deadline_;
    /** The server of the session that runs, or of the last one. */
    transport::ServerName server_;
    /** What its last session has shown; nothing once one has failed. */
    KnownServer known_;
    /** It has broken a session off when it was asked for its capabilities. */
    bool isWithoutCapabilities_ = false;
    /** It has not answered commands that were sent ahead. */
    bool isWithoutPipelining_ = false;
    /** It has refused TOP for a message, which is fetched whole in the same session from then on. */
    bool isWithoutQuitAhead_ = false;
    bool listing_ = false;
    /** The server of this session has announced that it gives the first lines of messages. */
    bool givesFirstLines_ = false;
    /** The server of this session answers commands that are sent ahead. */
    bool pipelines_ = false;
    /** The commands that were given to the session ahead, and whose replies nobody has asked for yet. */
    std::deque<std::string> askedAhead_;
    bool deadlineIsFixed_ = false;
    /** Pop3Session::progress() when the deadline was last set. */
    std::uint64_t progress_ = 0;
    protocol::RequestGuard requests_;
    bool givenUp_ = false;
    bool logOnRefused_ = false;
    std::uint64_t roundTrips_ = 0;
};

} // namespace poplib

/** The component under its full name. */
namespace POPLib {
using poplib::POP;
} // namespace POPLib
