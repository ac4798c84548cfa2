#pragma once

#include "components/protocol/direction.h"
#include "components/protocol/request_guard.h"
#include "components/smtplib/message.h"
#include "components/smtplib/message_source.h"
#include "components/smtplib/plans.h"
#include "components/smtplib/smtp_session.h"
#include "components/transport/connection.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace smtplib {

/** The request codes of the component. */
enum class Request : std::uint8_t { CloseConnection = 2, TransmitMessage = 3, OpenConnection = 4 };

using protocol::Direction;

/**
 * How long the component waits: all but the first and the last from RFC 5321 section 4.5.3.2. Tests shorten
 * these times.
 */
struct Timeouts {
    /** For the name look-up and the connection together. */
    std::chrono::milliseconds connection = std::chrono::minutes(1);
    std::chrono::milliseconds greeting = std::chrono::minutes(5);
    std::chrono::milliseconds hello = std::chrono::minutes(5);
    std::chrono::milliseconds sender = std::chrono::minutes(5);
    std::chrono::milliseconds recipient = std::chrono::minutes(5);
    std::chrono::milliseconds data = std::chrono::minutes(2);
    /** For each piece of the message to leave. */
    std::chrono::milliseconds dataBlock = std::chrono::minutes(3);
    /** After the final dot. Giving up early makes duplicates, as the server may have the message already. */
    std::chrono::milliseconds confirmation = std::chrono::minutes(10);
    /** For the reply to QUIT and any other on which nothing depends. */
    std::chrono::milliseconds quit = std::chrono::seconds(5);
};

/**
 * The SMTP client (RFC 5321). One message takes:
 *
 *     smtp.setBlocking(true);
 *     smtp.setHost(...);
 *     smtp.issueRequest(Request::OpenConnection);   // greeting, EHLO, STARTTLS, AUTH
 *     smtp.setSender(...); smtp.setRecipients(...); smtp.setCopies(...); smtp.setSubject(...);
 *     smtp.setAdditionalHeaders(...); smtp.setBody(...); smtp.setDataFile(...);
 *     smtp.issueRequest(Request::TransmitMessage);  // MAIL, RCPT, DATA; raises Progress
 *     smtp.issueRequest(Request::CloseConnection);  // QUIT
 *
 * A request blocks its caller, while the windows stay alive, and raises its events on the caller's stack: an
 * error thrown by a listener reaches the caller of the request.
 *
 * Every request can raise a RuntimeError. 20102 when another request is running, and for opening while a
 * session is open; 26002, 25062, 25052 when the name is unknown, the connection refused, the network
 * unreachable; 20321 to 20325 when encryption is demanded and not offered, or fails; 20172 when the server
 * does not prove that it knows the password where it should; 53, 68, 75, 57 when the data file cannot be
 * read; and those of 204xx, which tell why the message was not sent, or that it may have been (20442 to
 * 20444). After any error the session is closed. Closing while another request runs, or with nothing open,
 * does nothing, and closing raises no error of its own: what the server has confirmed is sent.
 *
 * All recipients get the message, or none: the first one whom the server refuses ends the attempt. The
 * component sends nothing twice by itself.
 */
class SMTP : private Exchange {
  public:
    static constexpr transport::DefaultPorts kDefaultPorts{25, 465, 587};

    /** Raised for every command and every line of a reply; never with a password or text of the message. */
    std::function<void(Direction direction, const std::string& message)> PITrail;
    /** Raised while a message is transmitted, with the bytes sent so far and all bytes of the message. */
    std::function<void(std::int64_t bytesDone, std::int64_t bytesTotal)> Progress;

    /** Raised once a session is open, with how its connection is protected. */
    std::function<void(const transport::Protection& protection)> Protected;

    explicit SMTP(Timeouts timeouts = {}) : timeouts_(timeouts) {}

    /**
     * Requests return when they are done. There is no other way, so true changes nothing.
     * \throws RuntimeError 5 for false.
     */
    void setBlocking(bool blocking);

    /** As transport::parseServerName() reads it. */
    void setHost(const QString& host) { host_ = host; }

    /** Who logs on, where the server offers that. Without a name nobody does. */
    void setAccount(Account account) { account_ = std::move(account); }

    void setTimeouts(Timeouts timeouts) { timeouts_ = timeouts; }

    /** One address. */
    void setSender(std::string sender) { message_.sender = std::move(sender); }

    /** Addresses with commas between them; see parseAddressList(). */
    void setRecipients(std::string recipients) { message_.recipients = std::move(recipients); }

    void setCopies(std::string copies) { message_.copies = std::move(copies); }

    /** UTF-8. */
    void setSubject(std::string subject) { message_.subject = std::move(subject); }

    /** Header lines besides those that the component writes, each with CR LF behind it. */
    void setAdditionalHeaders(std::string lines) { message_.additionalHeaders = std::move(lines); }

    /** Any text; WireText says what is made of it. No MIME header is added. */
    void setBody(std::string body) { message_.body = std::move(body); }

    /**
     * The drive path of a file whose content follows the body directly; empty for none. An open file given
     * with it is sent instead, whatever is under the path by then; the next transmission uses it up.
     */
    void setDataFile(const QString& path, platform::HeldFile file = {}) {
        message_.dataFile = path;
        message_.heldDataFile = std::move(file);
    }

    /**
     * Whether the data file holds nothing but short lines of ASCII that end in CR LF, as an encoder writes
     * them. The size to announce is then known, and the file is read only once.
     */
    void setDataFileEncoded(bool encoded) { message_.dataFileEncoded = encoded; }

    /**
     * How the next message is made of its fields for the server of the session; as prepareMessage() does it
     * when the function is empty.
     */
    void setForm(MessageForm form) { form_ = std::move(form); }

    /**
     * The Message-ID. When it is empty, the transmission makes one and keeps it, so that a message sent again
     * after a failure has the same one and its readers recognise the duplicate. A confirmed transmission
     * empties it.
     */
    void setMessageId(std::string id) { message_.messageId = std::move(id); }

    const std::string& messageId() const noexcept { return message_.messageId; }

    void issueRequest(Request request);

    /** What the server of the session that is open has announced, and how the log-on went. */
    const OpenedSession& opened() const noexcept { return opened_; }

    /** Who could hear what is said in the session that is open. */
    Channel channel() const { return channelOf(opened_.encrypted, connection_.isToThisComputer()); }

    /** The certificate of the server of the last connection; nothing where there was none. */
    std::optional<transport::Certificate> certificate() const { return connection_.certificate(); }

  private:
    template <class Action>
    void asRequest(const Action& action);
    void open();
    void transmit();
    void close();
    MessageTotals measured(MessageSource& source) const;
    void sendText(MessageSource& source, std::int64_t totalBytes);

    SmtpSession& session() override { return session_; }

    void connect(const transport::ServerName& server);
    void encrypt() override;
    Event next() override;
    Event nextSoon() override;
    Event awaitEvent();
    bool sendOutput();
    void raise(const Event& event) const;
    std::chrono::milliseconds timeout() const;
    void closeSession();

    Timeouts timeouts_;
    QString host_;
    Message message_;
    MessageForm form_;
    transport::Connection connection_;
    SmtpSession session_;
    Account account_;
    /** What the server of this session has announced, and how the log-on went. */
    OpenedSession opened_;
    bool inHaste_ = false;
    protocol::RequestGuard requests_;
};

} // namespace smtplib

/** The component under its full name. */
namespace SMTPLib {
using smtplib::SMTP;
} // namespace SMTPLib
