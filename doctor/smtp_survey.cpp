#include "doctor/smtp_survey.h"

#include "components/smtplib/smtp.h"
#include "email/box_texts.h"
#include "platform/runtime_error.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace doctor {

using smtplib::LogOnState;
using smtplib::SMTP;
using transport::Security;
namespace errors = platform::errors;

namespace {
Finding failing(int error, const QString& text) {
    Finding finding;
    finding.grade = Grade::Stops;
    finding.about = QStringLiteral("SMTP");
    finding.number = error;
    finding.box = email::boxOfFailedSending(error);
    finding.text = text.isEmpty() ? meaningForAdministrators(error) : text;
    finding.advice = adviceFor(error, finding.about);
    return finding;
}

class SmtpSurvey {
  public:
    SmtpSurvey(const QString& name, ServerSeen& server, const Surveys& surveys)
        : name_(name), server_(server), surveys_(surveys) {}

    /** Opens a session and ends it; false when that has failed. */
    bool meet(const smtplib::Account& account) {
        SMTP smtp;
        prepare(smtp, name_);
        smtp.setAccount(account);
        QElapsedTimer time;
        time.start();
        const int error =
            platform::errorNumberOf([&smtp] { smtp.issueRequest(smtplib::Request::OpenConnection); });
        takeCertificate(smtp, error);
        server_.greeting = greeting_;
        if (error != 0) {
            addFailure(error);
            return false;
        }
        server_.encryption = protection_.encryption;
        server_.offers = offers_;
        takeUses(smtp);
        addLogOn(smtp, !account.user.empty());
        smtp.issueRequest(smtplib::Request::CloseConnection);
        server_.milliseconds = time.elapsed();
        return true;
    }

    /** Says whether the certificate would be good for a spelling that looks at it. */
    void tryProof() {
        const auto server = transport::parseServerName(name_, SMTP::kDefaultPorts);
        SMTP smtp;
        prepare(smtp, withScheme(name_, *server, QStringLiteral("starttls://")));
        const int error =
            platform::errorNumberOf([&smtp] { smtp.issueRequest(smtplib::Request::OpenConnection); });
        takeCertificate(smtp, error);
        smtp.issueRequest(smtplib::Request::CloseConnection);
    }

  private:
    void add(Finding finding) { surveys_.report.findings.push_back(std::move(finding)); }

    void prepare(SMTP& smtp, const QString& name) {
        smtplib::Timeouts timeouts;
        timeouts.connection = surveys_.patience.connection;
        timeouts.greeting = surveys_.patience.answer;
        timeouts.hello = surveys_.patience.answer;
        timeouts.quit = surveys_.patience.quit;
        smtp.setTimeouts(timeouts);
        smtp.setHost(name);
        smtp.Protected = [this](const transport::Protection& protection) { protection_ = protection; };
        smtp.PITrail = [this](smtplib::Direction direction, const std::string& text) {
            hear(direction, text);
        };
    }

    void hear(smtplib::Direction direction, const std::string& text) {
        if (direction == smtplib::Direction::ToServer) {
            linesOfHello_ = text.starts_with("EHLO") ? 1 : 0;
            if (linesOfHello_ > 0) {
                offers_.clear();
            }
            return;
        }
        lastSaid_ = surveys_.said(text);
        constexpr std::size_t codeAndMark = 4;
        const QString words = surveys_.said(text.substr(std::min(codeAndMark, text.size())));
        if (greeting_.isEmpty()) {
            greeting_ = words;
        } else if (linesOfHello_ > 0 && linesOfHello_++ > 1) {
            // The first line is the server's name (RFC 5321 section 4.1.1.1).
            offers_.append(words);
        }
    }

    void takeCertificate(const SMTP& smtp, int error) {
        const bool isAboutIt =
            error >= errors::CertificateNotTrusted && error <= errors::CertificateNotValidNow;
        const auto certificate = smtp.certificate();
        if (certificate && (error == 0 || isAboutIt)) {
            server_.certificate = seenCertificate(*certificate, error, server_.host);
        }
    }

    void addFailure(int error) {
        Finding finding = failing(error, {});
        // A good word of the server's has nothing to do with it.
        if (lastSaid_.startsWith(u'4') || lastSaid_.startsWith(u'5')) {
            finding.text += QStringLiteral(" The server has said: ") + lastSaid_;
        }
        if (error == errors::SendingTimedOut) {
            finding.text += QStringLiteral(" Members wait for up to five minutes before they see it.");
        }
        add(std::move(finding));
    }

    void takeUses(const SMTP& smtp) {
        const smtplib::Extensions& can = smtp.opened().extensions;
        if (can.size) {
            server_.uses.append(can.sizeLimit > 0
                                    ? QStringLiteral("SIZE (at most %1 bytes)").arg(can.sizeLimit)
                                    : QStringLiteral("SIZE"));
        }
        if (can.eightBit) {
            server_.uses.append(QStringLiteral("8BITMIME"));
        }
        if (can.pipelining) {
            server_.uses.append(QStringLiteral("PIPELINING"));
        }
        for (const std::string_view mechanism : smtplib::usableMechanisms(can, smtp.channel())) {
            server_.uses.append(
                QStringLiteral("AUTH ") +
                QString::fromLatin1(mechanism.data(), static_cast<qsizetype>(mechanism.size())));
        }
    }

    void addLogOn(const SMTP& smtp, bool tried) {
        const smtplib::OpenedSession& opened = smtp.opened();
        if (opened.extensions.mechanisms.empty()) {
            Finding finding;
            finding.about = QStringLiteral("SMTP");
            finding.text =
                QStringLiteral("The server offers no log-on here. It has to know members' computers by their "
                               "addresses, or nothing can be sent.");
            finding.advice = QStringLiteral(
                "Send a letter to yourself. Many servers offer a log-on once the connection is encrypted.");
            add(std::move(finding));
            return;
        }
        if (smtplib::usableMechanisms(opened.extensions, smtp.channel()).empty() ||
            (tried && opened.logOn == LogOnState::NoWay)) {
            add(failing(errors::SendingLogOnImpossible,
                        QStringLiteral("The server offers a log-on, but none that may be used on this "
                                       "connection: where it demands one, "
                                       "nothing can be sent.")));
            server_.logOn = QStringLiteral("not possible");
        } else if (opened.logOn == LogOnState::Refused || opened.logOn == LogOnState::RefusedForNow) {
            server_.logOn = QStringLiteral("refused");
            add(failing(
                opened.logOn == LogOnState::Refused ? errors::SendingLogOnRefused
                                                    : errors::SendingLogOnRefusedForNow,
                QStringLiteral(
                    "The server does not know the name and the password, so it may refuse the sender or a "
                    "recipient. It has said: ") +
                    lastSaid_));
            adviseOnRefusal();
        } else if (opened.logOn == LogOnState::LoggedOn) {
            server_.logOn = QStringLiteral("accepted");
        }
    }

    /** When the server for mail does not take the password either, it is most likely mistyped. */
    void adviseOnRefusal() {
        std::vector<Finding>& findings = surveys_.report.findings;
        if (std::any_of(findings.begin(), findings.end(),
                        [](const Finding& finding) { return finding.number == errors::LogOnRefused; })) {
            findings.back().advice =
                QStringLiteral("Type the password again: the server for mail has refused it, too.");
        }
    }

    const QString& name_;
    ServerSeen& server_;
    const Surveys& surveys_;
    transport::Protection protection_;
    QString greeting_;
    QString lastSaid_;
    QStringList offers_;
    /** The number of the next line of the reply to EHLO; 0 while another reply is due. */
    int linesOfHello_ = 0;
};
} // namespace

void surveySmtp(const QString& name, const smtplib::Account& account, const Surveys& surveys) {
    ServerSeen server{QStringLiteral("SMTP"), name};
    const auto parsed = approach(server, SMTP::kDefaultPorts, surveys);
    if (!parsed) {
        surveys.report.servers.push_back(server);
        return;
    }
    SmtpSurvey survey(name, server, surveys);
    if (survey.meet(account)) {
        if (parsed->security == Security::WhenOffered && !server.encryption.isEmpty()) {
            survey.tryProof();
        }
        addEndOfCertificate(server, surveys.report.findings);
    }
    surveys.report.servers.push_back(server);
}

} // namespace doctor
