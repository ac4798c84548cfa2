#include "doctor/pop3_survey.h"

#include "components/poplib/reply_text.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "retrieval/log_in_failures.h"

#include <QElapsedTimer>

#include <algorithm>

namespace doctor {

using poplib::POP;
using transport::Security;
namespace errors = platform::errors;

namespace {
const QString& pop3() {
    static const QString name = QStringLiteral("POP3");
    return name;
}

/** A failure at the log-in, as members see it. `said` is the server's last word, which may be a good one. */
Finding failing(Grade grade, int error, const QString& said) {
    Finding finding;
    finding.grade = grade;
    finding.about = pop3();
    finding.number = error;
    finding.box = boxOfFailedLogIn(error);
    finding.text = meaningForAdministrators(error);
    if (said.startsWith(QLatin1String("-ERR"))) {
        finding.text += QStringLiteral(" The server has said: ") + said;
    }
    finding.advice = adviceFor(error, pop3());
    return finding;
}

/** What the survey of one server needs, with the client that listens. */
class Pop3Survey {
  public:
    Pop3Survey(const QString& name, ServerSeen& server, const Surveys& surveys)
        : name_(name), server_(server), surveys_(surveys) {}

    /** Opens a session up to the log-on; false when that has failed. */
    bool meet() {
        POP pop;
        prepare(pop, name_);
        poplib::Introduction met;
        QElapsedTimer time;
        time.start();
        const int error = platform::errorNumberOf([&] { met = pop.introduce(); });
        takeCertificate(pop, error);
        if (error != 0) {
            add(failing(Grade::Stops, error, lastSaid_));
            return false;
        }
        server_.milliseconds = time.elapsed();
        server_.greeting = surveys_.said(met.greeting);
        server_.encryption = protection_.encryption;
        takeOffers(met);
        addPrediction(met);
        return true;
    }

    /** Says whether the certificate would be good for a spelling that looks at it. */
    void tryProof() {
        const auto server = transport::parseServerName(name_, POP::kDefaultPorts);
        POP pop;
        prepare(pop, withScheme(name_, *server, QStringLiteral("starttls://")));
        const int error = platform::errorNumberOf([&pop] { static_cast<void>(pop.introduce()); });
        takeCertificate(pop, error);
    }

    void logOn(const Member& member, const LookThrough& lookThrough) {
        POP pop;
        prepare(pop, name_);
        pop.setLoginUser(member.user);
        pop.setLoginPassword(member.password);
        const int error =
            platform::errorNumberOf([&pop] { pop.issueRequest(poplib::Request::ConnectAndLogOn); });
        if (error != 0) {
            server_.logOn = QStringLiteral("refused");
            addRefusal(error);
            pop.leave();
            return;
        }
        server_.logOn = QStringLiteral("accepted");
        server_.messages = pop.messageCount();
        server_.bytes = pop.mailboxSize();
        lookThrough(pop, server_);
        pop.leave();
    }

  private:
    void add(Finding finding) { surveys_.report.findings.push_back(std::move(finding)); }

    void prepare(POP& pop, const QString& name) {
        lastSaid_.clear();
        pop.setTimeouts({surveys_.patience.answer, surveys_.patience.quit, surveys_.patience.quit});
        pop.setMailServer(name);
        pop.Protected = [this](const transport::Protection& protection) { protection_ = protection; };
        pop.PITrail = [this](poplib::Direction direction, const std::string& text) {
            if (direction == poplib::Direction::FromServer) {
                lastSaid_ = surveys_.said(text);
                lastReply_ = text;
            }
        };
    }

    void takeCertificate(const POP& pop, int error) {
        const bool isAboutIt =
            error >= errors::CertificateNotTrusted && error <= errors::CertificateNotValidNow;
        const auto certificate = pop.certificate();
        if (certificate && (error == 0 || isAboutIt)) {
            server_.certificate = seenCertificate(*certificate, error, server_.host);
        }
    }

    void takeOffers(const poplib::Introduction& met) {
        const poplib::Capabilities& can = met.capabilities;
        for (const std::string& line : can.lines) {
            server_.offers.append(surveys_.said(line));
        }
        for (const char* const command : {"TOP", "UIDL"}) {
            // They are used in any case, and may well work where they are not announced.
            if (std::find(can.lines.begin(), can.lines.end(), command) != can.lines.end()) {
                server_.uses.append(QLatin1String(command));
            }
        }
        if (can.utf8) {
            server_.uses.append(QStringLiteral("UTF8"));
        }
        server_.uses.append(can.pipelining
                                ? QStringLiteral("PIPELINING")
                                : QStringLiteral("commands ahead, once it has proved that it answers them"));
        for (const std::string_view way : poplib::waysToLogOn(met)) {
            server_.uses.append(way == "USER"
                                    ? QStringLiteral("USER and PASS")
                                    : QString::fromLatin1(way.data(), static_cast<qsizetype>(way.size())));
        }
        addDelay(can);
    }

    void addDelay(const poplib::Capabilities& can) {
        if (can.loginDelay.value_or(0) <= 0) {
            return;
        }
        Finding finding = failing(Grade::Met, errors::MailServerBusy, {});
        finding.text =
            QStringLiteral(
                "The server lets a member log on only every %1 seconds (LOGIN-DELAY). Opening a "
                "message, deleting one and each check for new mail are log-ons of their own, and are refused "
                "when they come sooner.")
                .arg(*can.loginDelay);
        finding.advice = QStringLiteral(
            "Take the delay away at the server (Cyrus: popminpoll: 0), or set GetMailEvery higher.");
        add(std::move(finding));
    }

    /** What a log-on will come to, as far as it can be known without one. */
    void addPrediction(const poplib::Introduction& met) {
        const poplib::Capabilities& can = met.capabilities;
        const auto ways = poplib::waysToLogOn(met);
        const bool showsPassword = !met.encrypted && ways.front() == "USER";
        if (showsPassword && can.known && !can.user) {
            add(failing(Grade::Stops, errors::EncryptionNotOffered, {}));
            surveys_.report.findings.back().text =
                QStringLiteral("The server takes no password on a connection that is not "
                               "encrypted, and this one is not.");
        } else if (showsPassword) {
            Finding finding;
            finding.about = pop3();
            finding.text = QStringLiteral("The password crosses the network in clear.");
            finding.advice = QStringLiteral("Encrypt the connection: tls:// before the name in line 3.");
            add(std::move(finding));
        }
    }

    /** A log-on that the server does not let through. */
    void addRefusal(int error) {
        const std::string text = lastReply_.starts_with("-ERR ") ? lastReply_.substr(5) : std::string();
        const bool isDelay = error == errors::MailServerBusy && poplib::hasCode(text, "LOGIN-DELAY");
        const bool isLock = error == errors::MailServerBusy && poplib::hasCode(text, "IN-USE");
        Finding finding = failing(isDelay || isLock ? Grade::Met : Grade::Stops, error, lastSaid_);
        if (isDelay) {
            finding.text =
                QStringLiteral(
                    "The server refuses a log-on that comes too soon after another one. It has said: ") +
                lastSaid_;
            finding.advice = QStringLiteral(
                "Wait for a minute and run the doctor again; take the delay away at the server (Cyrus: "
                "popminpoll: 0), since opening a message is a log-on, too.");
        } else if (isLock) {
            finding.text =
                QStringLiteral("The mailbox is locked: another program has it open. The server has said: ") +
                lastSaid_;
            finding.advice =
                QStringLiteral("End the other program, or let the server take several sessions at once.");
        }
        add(std::move(finding));
    }

    const QString& name_;
    ServerSeen& server_;
    const Surveys& surveys_;
    transport::Protection protection_;
    QString lastSaid_;
    std::string lastReply_;
};
} // namespace

void surveyPop3(const QString& name, const Member* member, const LookThrough& lookThrough,
                const Surveys& surveys) {
    ServerSeen server{pop3(), name};
    const auto parsed = approach(server, POP::kDefaultPorts, surveys);
    if (!parsed) {
        surveys.report.servers.push_back(server);
        return;
    }
    Pop3Survey survey(name, server, surveys);
    if (survey.meet()) {
        if (parsed->security == Security::WhenOffered && !server.encryption.isEmpty()) {
            survey.tryProof();
        }
        addEndOfCertificate(server, surveys.report.findings);
        if (member != nullptr) {
            surveys.tell(QStringLiteral("Logging on at %1").arg(parsed->host));
            survey.logOn(*member, lookThrough);
        }
    }
    surveys.report.servers.push_back(server);
}

} // namespace doctor
