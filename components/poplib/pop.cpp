#include "components/poplib/pop.h"

#include "components/poplib/reply_text.h"
#include "platform/checked.h"
#include "platform/runtime_error.h"

#include <variant>

namespace poplib {

using platform::RuntimeError;
namespace errors = platform::errors;

namespace {
int numberOf(transport::Outcome outcome) {
    return transport::openingErrorNumber(outcome, errors::MailServerTrouble, errors::MailServerTrouble);
}

/** The number for a refused log-on, by what the server says of the reason. */
int numberOf(const LogOnRefused& refused) {
    if (mayBeTriedLater(refused.text)) {
        return errors::MailServerBusy;
    }
    if (isForGood(refused.text)) {
        return errors::LogOnImpossible;
    }
    return refused.inClear && demandsEncryption(refused.text) ? errors::EncryptionNotOffered
                                                              : errors::LogOnRefused;
}
} // namespace

void POP::asRequest(const std::function<void()>& action) {
    requests_.run(
        [&] {
            givenUp_ = false;
            try {
                action();
            } catch (const RuntimeError& error) {
                if (!givenUp_) {
                    rememberTrouble(error.number());
                    throw;
                }
            } catch (...) {
                if (!givenUp_) {
                    throw;
                }
            }
            // The request may have succeeded with bytes that came earlier, but giveUp() has closed the
            // connection.
            if (givenUp_) {
                throw RuntimeError(errors::GivenUp);
            }
        },
        [this] {
            // A reply may be half read, so the session cannot go on. After a refused log-on it can.
            if (!logOnRefused_ || givenUp_) {
                closeSession();
            }
        });
}

/** A server that failed over commands that were sent ahead gets them one by one in the next session. */
void POP::rememberTrouble(int error) {
    // The server may have changed, which is why it failed.
    known_ = {};
    if (error == errors::MailServerTrouble && !askedAhead_.empty()) {
        isWithoutPipelining_ = true;
    }
}

void POP::issueRequest(Request request) {
    switch (request) {
    case Request::ConnectAndLogOn:
        // A refused log-on keeps the session until the log-off, even when the server has hung up meanwhile.
        if (logOnRefused_ || connection_.isOpen()) {
            throw RuntimeError(errors::MailServerBusy);
        }
        asRequest([this] { logOn(); });
        break;
    case Request::LogOffAndDisconnect:
        // A request that runs further down the stack still needs the session.
        if (!requests_.isRunning() && hasSession()) {
            asRequest([this] { logOff(); });
        }
        break;
    case Request::RetrieveCurrentMessage:
        asRequest([this] { retrieve(); });
        break;
    case Request::DeleteCurrentMessage:
        asRequest([this] { deleteCurrent(); });
        break;
    }
}

void POP::giveUp() {
    if (requests_.isRunning()) {
        givenUp_ = true;
        connection_.abort();
    }
}

void POP::leave() noexcept {
    // An error has closed the session already, so there is nothing left to do about it.
    static_cast<void>(platform::errorNumberOf([this] { issueRequest(Request::LogOffAndDisconnect); }));
}

std::optional<std::int32_t> POP::currentMessageSize() {
    std::optional<std::int32_t> size;
    asRequest([&] { size = listed_.size(*this, currentMessage_); });
    return size;
}

/** Opens connections until the plan has come to an end on one, and returns what it has come to. */
template <class Plan>
auto POP::overConnections(const Plan& plan) {
    const auto server = transport::parseServerName(mailServer_, kDefaultPorts);
    if (!server) {
        throw RuntimeError(errors::HostNotFound);
    }
    if (server_ != *server) {
        forgetServer();
        server_ = *server;
    }
    LogOnTerms terms{server->security, !isWithoutCapabilities_, listing_, !isWithoutPipelining_, known_};
    for (int connections = 1; connections <= kMaximumConnections; ++connections) {
        connect(*server);
        auto outcome = plan(terms);
        const auto* const again = std::get_if<StartAgain>(&outcome);
        if (again == nullptr) {
            if (Protected) {
                Protected(connection_.protection());
            }
            return outcome;
        }
        startAgain(again->terms);
        terms = again->terms;
        terms.known = {};
    }
    throw RuntimeError(errors::MailServerTrouble);
}

void POP::logOn() {
    logOnRefused_ = false;
    roundTrips_ = 0;
    if (!canBeSentAsArgument(loginUser_) || !canBeSentAsArgument(loginPassword_)) {
        throw RuntimeError(errors::LogOnRefused);
    }
    // Other handlers run while this one waits, and may set another name for a log-on of their own.
    const sasl::Account account{loginUser_, loginPassword_};
    auto outcome =
        overConnections([&](const LogOnTerms& terms) { return poplib::logOn(*this, account, terms); });
    if (const auto* const refused = std::get_if<LogOnRefused>(&outcome)) {
        const int error = numberOf(*refused);
        // Both may be tried again, which the user is told while the session is open.
        logOnRefused_ = error == errors::LogOnRefused || error == errors::MailServerBusy;
        throw RuntimeError(error);
    }
    auto& opened = std::get<OpenMailbox>(outcome);
    totals_ = opened.totals;
    pipelines_ = opened.pipelines;
    givesFirstLines_ = opened.givesFirstLines;
    known_ = std::move(opened.known);
    listed_.takeSizes(std::move(opened.sizes));
}

Introduction POP::introduce() {
    if (logOnRefused_ || connection_.isOpen()) {
        throw RuntimeError(errors::MailServerBusy);
    }
    Introduction introduction;
    asRequest([&] {
        introduction = std::get<Introduction>(
            overConnections([this](const LogOnTerms& terms) { return meet(*this, terms); }));
        logOff();
    });
    return introduction;
}

bool POP::look(std::int32_t bodyLines, const ListedMailbox::TakeLine& take) {
    bool given = false;
    asRequest([&] { given = readResponse(*this, topCommand(currentMessage_, bodyLines), take); });
    return given;
}

/** A server that was told to end the session ahead may have hung up before its last replies are read. */
bool POP::hasSession() const {
    return logOnRefused_ || connection_.isOpen() || !askedAhead_.empty();
}

void POP::connect(const transport::ServerName& server) {
    session_ = Pop3Session(limits_.listingBytes);
    // Whoever had the session before may have left it without the log-off.
    askedAhead_.clear();
    const transport::Outcome outcome = connection_.open(server, QDeadlineTimer(timeouts_.answer));
    if (outcome != transport::Outcome::Done) {
        throw RuntimeError(numberOf(outcome));
    }
    // The session before may have ended over a reply that was due soon.
    deadlineIsFixed_ = false;
    renewDeadline();
}

/** Ends a session that is to be followed by another one with these terms. */
void POP::startAgain(const LogOnTerms& terms) {
    if (givenUp_) {
        throw RuntimeError(errors::GivenUp);
    }
    if (!terms.asksForCapabilities) {
        // No later session waits for an answer that this server does not give.
        isWithoutCapabilities_ = true;
    }
    if (!terms.pipelines) {
        isWithoutPipelining_ = true;
    }
    connection_.abort();
}

void POP::encrypt() {
    if (session_.hasUnusedBytes()) {
        throw RuntimeError(errors::EncryptionFailed);
    }
    const transport::Outcome outcome = connection_.encrypt(QDeadlineTimer(timeouts_.answer));
    if (outcome != transport::Outcome::Done) {
        throw RuntimeError(numberOf(outcome));
    }
    renewDeadline();
}

void POP::logOff() {
    if (listed_.hasDeletions()) {
        listed_.quit(*this);
    } else {
        // Nothing depends on these replies, and the server may have hung up already. Without the unique-ids a
        // later deletion compares sizes and lines only.
        waitNoLongerThan(timeouts_.quit);
        static_cast<void>(platform::errorNumberOf([this] { listed_.quit(*this); }));
    }
    closeSession();
}

void POP::retrieve() {
    const auto take = [this](const Event& event) { raise(event); };
    const auto takeWhole = [this](const Event& event) {
        raiseRawHeader(event);
        raise(event);
    };
    if (bodyLineLimit_ > 0) {
        // A refused message is no error here: the list has a row for it all the same.
        using WhenRefused = ListedMailbox::WhenRefused;
        // The answers to what was asked ahead come first.
        const auto whenRefused = askedAhead_.empty() ? WhenRefused::FetchWhole : WhenRefused::FetchLater;
        listed_.list(*this, currentMessage_, bodyLineLimit_, limits_, take, whenRefused);
    } else if (!readResponse(*this, retrCommand(currentMessage_), takeWhole)) {
        throw RuntimeError(errors::MessageNotGiven);
    }
}

void POP::deleteCurrent() {
    if (!connection_.isOpen()) {
        throw RuntimeError(errors::MailServerTrouble);
    }
    listed_.deleteMessage(*this, currentMessage_, limits_);
}

void POP::raiseRawHeader(const Event& event) const {
    const auto* const header = std::get_if<HeaderLine>(&event);
    if (header != nullptr && RawHeader) {
        RawHeader(std::string(header->field).append(header->separator).append(header->value));
    }
}

void POP::raise(const Event& event) {
    if (const auto* const header = std::get_if<HeaderLine>(&event)) {
        if (Header) {
            Header(header->field, header->value);
        }
    } else if (const auto* const body = std::get_if<BodyLine>(&event)) {
        if (Transfer) {
            Transfer(platform::checkedTo<std::int32_t>(body->bytesTransferred), body->text);
        }
    }
}

} // namespace poplib
