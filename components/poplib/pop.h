#pragma once

#include "components/poplib/message_identities.h"
#include "components/poplib/pop3_session.h"
#include "components/transport/connection.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace POPLib {

/** The request codes of the component. */
enum class Request : std::uint8_t {
    ConnectAndLogOn = 1,
    LogOffAndDisconnect = 2,
    RetrieveCurrentMessage = 3,
    DeleteCurrentMessage = 4
};

enum class Direction { ToServer, FromServer };

/** How long the component waits. Tests shorten it. */
struct Timeouts {
    /** For the name, the connection, and each answer; an answer that keeps coming may take longer. */
    std::chrono::milliseconds answer{60'000};
    /** For the farewell of a server that has refused the log-on: nothing depends on it. */
    std::chrono::milliseconds farewell{5'000};
};

/**
 * The POP3 client (RFC 1939). The life of a session:
 *
 *     pop.setMailServer(...); pop.setLoginUser(...); pop.setLoginPassword(...);
 *     pop.issueRequest(Request::ConnectAndLogOn);   // USER, PASS, STAT
 *     pop.messageCount(); pop.mailboxSize();
 *     pop.setCurrentMessage(1);
 *     pop.currentMessageSize();                     // LIST
 *     pop.setBodyLineLimit(25);
 *     pop.issueRequest(Request::RetrieveCurrentMessage); // TOP or RETR; raises Header and Transfer
 *     pop.issueRequest(Request::LogOffAndDisconnect);    // QUIT
 *
 * A request blocks its caller, while the windows stay alive, and raises its events from the caller's own
 * frame: an error thrown by a listener reaches the caller of the request.
 *
 * A deletion is carried out only on a message that was listed before, by its size and its first lines, and
 * that the number still names: the client remembers what every number named, follows its own deletions, and
 * compares unique-ids where the server has any, otherwise sizes and headers. Nothing is deleted before the
 * log-off has been confirmed.
 *
 * Every request can raise a RuntimeError:
 * 20102 when another request is running, for a log-on while a session is open, and when the server asks to
 * try again later; 20172 when the server refuses the name or the password, or these cannot be sent at all;
 * 26002, 25062, 25052 when the name is unknown, the connection refused, the network unreachable; 20302 for
 * silence, a lost connection and answers that are no POP3; 6 for a number that does not fit; 7 for a message
 * that is too large; 20312 for the deletion of a number that by now names another message; 20322 when the
 * server refuses a whole message (one that is listed is then without its lines). After any error
 * but a refused log-on the session is closed. A refused log-on stays open until the log-off, and meanwhile a
 * second log-on meets 20102.
 */
class POP {
  public:
    static constexpr std::uint16_t kDefaultPort = 110;

    /** Raised for every header line; `field` is empty for a folded continuation line. */
    std::function<void(const std::string& field, const std::string& value)> Header;
    /** Raised for every body line, with the bytes of this message received so far. */
    std::function<void(std::int32_t bytesTransferred, const std::string& text)> Transfer;
    /** Raised for every command and every status line. A password is never in it. */
    std::function<void(Direction direction, const std::string& message)> PITrail;

    explicit POP(Timeouts timeouts = {}) : timeouts_(timeouts) {}

    void setLoginUser(std::string user) { loginUser_ = std::move(user); }

    void setLoginPassword(std::string password) { loginPassword_ = std::move(password); }

    /** `host`, `host:port` or `[address]:port`. */
    void setMailServer(const QString& server) { mailServer_ = server; }

    void setTimeouts(Timeouts timeouts) { timeouts_ = timeouts; }

    void issueRequest(Request request);

    /** Logs off, if need be, after a failure that is already told: what goes wrong meanwhile is not told too.
     */
    void leave() noexcept;

    /** True while a request waits for the server, further down the stack of whoever asks. */
    bool isRunning() const noexcept { return running_; }

    /** Bytes of all messages, as the server reported them at log-on. */
    std::int32_t mailboxSize() const noexcept { return mailboxSize_; }

    /** Number of messages, as the server reported it at log-on. */
    std::int16_t messageCount() const noexcept { return messageCount_; }

    void setCurrentMessage(std::int16_t number) noexcept { currentMessage_ = number; }

    /**
     * Asks the server for the size of the current message, in bytes (LIST n); nothing when the server refuses
     * to tell. Blocks and raises as a request does.
     */
    std::optional<std::int32_t> currentMessageSize();

    /** Body lines that a retrieval fetches with the header; 0 means the whole message. */
    void setBodyLineLimit(std::int32_t lines) noexcept { bodyLineLimit_ = lines; }

    /** Round trips to the server since the last log-on: times that commands were sent. */
    std::uint64_t roundTrips() const noexcept { return roundTrips_; }

  private:
    template <class Action>
    void asRequest(const Action& action);
    void logOn();
    void logOff();
    void retrieve();
    void deleteMessage();
    bool fetchContent(Command command);
    bool readContent(Command command, const std::function<void(const Event&)>& take);
    void rememberUniqueIds();
    std::optional<std::map<std::int32_t, std::string>> askUniqueIds();
    bool stillNames(std::int32_t number, const MessageIdentity& identity);
    void mustStillBeTheListedMessage(std::int32_t number);

    std::optional<std::string> ask(Command command);
    void mustAccept(Command command);
    void sendQueued();
    Event awaitEvent();
    void raise(const Event& event);
    [[noreturn]] void refusedLogOn(std::string_view text);
    void closeSession();

    Timeouts timeouts_;
    QString mailServer_;
    std::string loginUser_;
    std::string loginPassword_;
    std::int16_t currentMessage_ = 0;
    std::int32_t bodyLineLimit_ = 0;
    std::int16_t messageCount_ = 0;
    std::int32_t mailboxSize_ = 0;

    transport::Connection connection_;
    Pop3Session session_;
    /** How long the running request waits for an answer. */
    std::chrono::milliseconds patience_{0};
    bool running_ = false;
    bool logOnRefused_ = false;

    MessageIdentities identities_;
    /** The size that LIST told last, and of which message. */
    std::pair<std::int32_t, std::int32_t> numberAndSize_{0, 0};
    /** Messages that were listed in this session. */
    std::set<std::int32_t> listed_;
    /** Messages that the server will remove at the log-off. */
    std::set<std::int32_t> deleted_;
    std::uint64_t roundTrips_ = 0;
};

} // namespace POPLib
