#include "doctor/directory_survey.h"

#include "addresses/directory_query.h"
#include "addresses/directory_session.h"
#include "addresses/directory_troubles.h"
#include "platform/nested_wait.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QElapsedTimer>
#include <QEventLoop>

#include <functional>
#include <optional>
#include <utility>

namespace doctor {

using addresses::DirectoryAnswer;
using addresses::DirectoryEnd;
using addresses::DirectorySession;
using transport::Security;
namespace errors = platform::errors;
namespace results = addresses::results;

namespace {
constexpr int kServerLine = 17;
constexpr int kBaseLine = 18;

QString ldap() {
    return QStringLiteral("LDAP");
}

/** Waits for what the session is asked. */
DirectoryAnswer answerTo(const std::function<void(DirectorySession::Told)>& ask) {
    const platform::NestedWait wait;
    QEventLoop loop;
    std::optional<DirectoryAnswer> answer;
    ask([&](DirectoryAnswer told) {
        answer = std::move(told);
        loop.quit();
    });
    while (!answer) {
        loop.exec();
    }
    return *std::move(answer);
}

Finding met(int line, int number, const std::string& box, const QString& text, const QString& advice) {
    Finding finding;
    finding.grade = Grade::Met;
    finding.about = ldap();
    finding.line = line;
    finding.number = number;
    finding.box = QString::fromStdString(box);
    finding.text = text;
    finding.advice = advice;
    return finding;
}

Finding information(const QString& text, const QString& advice = {}) {
    Finding finding;
    finding.about = ldap();
    finding.text = text;
    finding.advice = advice;
    return finding;
}

QString adviceForOpening(int error) {
    switch (error) {
    case errors::FileNotFound:
        return QStringLiteral("Install all files of the program and what they need.");
    case errors::EncryptionNotOffered:
        return QStringLiteral("Write tls:// before the name, or let the server offer StartTLS.");
    case errors::EncryptionFailed:
        return QStringLiteral("Look at port and spelling: tls:// for 636, starttls:// for 389.");
    case errors::CertificateForOtherName:
        return QStringLiteral("Write the name that stands in the certificate.");
    case errors::HostNotFound:
        return QStringLiteral("Correct the name, or see why the name service does not know it.");
    case errors::ConnectionRefused:
        return QStringLiteral("Correct name and port: nothing listens there.");
    case errors::MailServerTrouble:
        return QStringLiteral("Correct scheme and port: tls:// for 636, starttls:// for 389.");
    default:
        return adviceFor(error, ldap());
    }
}

class Survey {
  public:
    Survey(const transport::ServerName& name, ServerSeen& server, const Surveys& surveys)
        : server_(server), surveys_(surveys), session_(name, surveys.patience.connection) {}

    bool open() {
        const DirectoryEnd end = answerTo([this](auto told) { session_.open(std::move(told)); }).end;
        const int error = addresses::errorNumberOf(end);
        const auto certificate = session_.certificate();
        if (certificate && (error == 0 || !whyRefused(error, server_.host).isEmpty())) {
            server_.certificate = seenCertificate(*certificate, error, server_.host);
        }
        server_.encryption = session_.protection().encryption;
        if (error != 0) {
            addTrouble(kServerLine, end, {}, adviceForOpening(error));
        }
        return error == 0;
    }

    /** Whether the base is there; true also where the server does not say. */
    bool findBase(const QString& base) {
        const DirectoryEnd end = search(base, true, "(objectClass=*)").end;
        const bool isThere = end.kind == DirectoryEnd::Kind::Answered &&
                             (end.code == results::Success || addresses::demandsLogOn(end.code));
        if (!isThere) {
            addTrouble(kBaseLine, end, QStringLiteral("The search base %1 cannot be read.").arg(base),
                       QStringLiteral("Write the directory's own name, such as dc=example,dc=org."));
        }
        return isThere;
    }

    /** Searches as the program does, with a log-on where the program would. */
    void findSomebody(const QString& base, const Member* member) {
        DirectoryAnswer answer = searchForMail(base);
        const bool demanded = isDemand(answer.end);
        if (demanded && !session_.protection().serverProven) {
            addTrouble(
                kServerLine, answer.end,
                QStringLiteral("The server demands a log-on, and the password is shown only to one that has "
                               "proven its name."),
                QStringLiteral("Write tls:// or starttls:// before the name, or let everybody search."));
            return;
        }
        if (demanded && member == nullptr) {
            add(information(QStringLiteral("The server demands a log-on, which was not tried."),
                            QStringLiteral("Run the doctor with --user.")));
            return;
        }
        if (demanded) {
            if (!logOn(base, *member)) {
                return;
            }
            answer = searchForMail(base);
        }
        tellOf(answer, base, demanded);
    }

    void tellOfClearText() {
        if (server_.encryption.isEmpty()) {
            add(information(QStringLiteral("What members look for crosses the network in clear."),
                            QStringLiteral("Encrypt the connection: tls:// or starttls:// before the name in "
                                           "line 17.")));
        }
    }

  private:
    void add(Finding finding) { surveys_.report.findings.push_back(std::move(finding)); }

    void addTrouble(int line, const DirectoryEnd& end, const QString& text, const QString& advice) {
        const std::string box = addresses::troubleOf(end);
        Finding finding = met(line, addresses::errorNumberOf(end), box,
                              text.isEmpty() ? QString::fromStdString(box) : text, advice);
        if (!end.said.empty()) {
            finding.text += QStringLiteral(" The server has said: ") + surveys_.said(end.said);
        }
        add(std::move(finding));
    }

    DirectoryAnswer search(const QString& base, bool baseOnly, const std::string& filter) {
        // One entry is asked for; a server that sends more is let go on until the second.
        constexpr std::size_t most = 2;
        return answerTo([&](auto told) {
            session_.search({platform::toBytes(base), baseOnly, filter, 1, 0}, most, std::move(told));
        });
    }

    DirectoryAnswer searchForMail(const QString& base) { return search(base, false, "(mail=*)"); }

    static bool isDemand(const DirectoryEnd& end) {
        return end.kind == DirectoryEnd::Kind::Answered && addresses::demandsLogOn(end.code);
    }

    bool logOn(const QString& base, const Member& member) {
        const std::string name = addresses::userBelow(platform::toBytes(base), member.user);
        const DirectoryEnd end =
            answerTo([&](auto told) { session_.logOn(name, member.password, std::move(told)); }).end;
        const bool isIn = end.kind == DirectoryEnd::Kind::Answered && end.code == results::Success;
        server_.logOn = isIn ? QStringLiteral("accepted") : QStringLiteral("refused");
        if (!isIn) {
            add(met(kBaseLine, addresses::errorNumberOf(end), addresses::troubleOfLogOn(end),
                    QStringLiteral("The log-on as %1 has failed.").arg(surveys_.said(name)),
                    QStringLiteral("Give members a uid directly below the search base, with the password of "
                                   "their mail, or let everybody search.")));
        }
        return isIn;
    }

    void tellOf(const DirectoryAnswer& answer, const QString& base, bool hasLoggedOn) {
        const bool isAnswered = answer.end.kind == DirectoryEnd::Kind::Answered;
        if (isAnswered && !answer.entries.empty()) {
            server_.uses.append(hasLoggedOn ? QStringLiteral("search behind a log-on")
                                            : QStringLiteral("search without a log-on"));
            add(information(
                hasLoggedOn ? QStringLiteral("Whoever has logged on finds entries with an address.")
                            : QStringLiteral("Everybody finds entries with an address, without a log-on.")));
        } else if (isAnswered && answer.end.code == results::Success) {
            add(met(kBaseLine, 0, {},
                    QStringLiteral("Nobody with an address (mail) is found below %1.").arg(base),
                    QStringLiteral("Look at the search base, and at what the server lets members read.")));
        } else {
            addTrouble(kServerLine, answer.end, {}, QStringLiteral("Look into the server's log."));
        }
    }

    ServerSeen& server_;
    const Surveys& surveys_;
    DirectorySession session_;
};

/** Says whether the certificate would be good for a spelling that looks at it. */
void tryProof(transport::ServerName name, ServerSeen& server, const Surveys& surveys) {
    name.security = Security::Demanded;
    DirectorySession session(name, surveys.patience.connection);
    const DirectoryEnd end = answerTo([&](auto told) { session.open(std::move(told)); }).end;
    if (const auto certificate = session.certificate()) {
        server.certificate = seenCertificate(*certificate, addresses::errorNumberOf(end), server.host);
    }
}
} // namespace

void surveyDirectory(const QString& name, const QString& base, const Member* member, const Surveys& surveys) {
    ServerSeen server{ldap(), name};
    const auto parsed = approach(server, addresses::kDirectoryPorts, surveys);
    if (!parsed) {
        surveys.report.findings.push_back(met(kServerLine, errors::HostNotFound, addresses::troubleOfName(),
                                              QStringLiteral("%1 is no name of a server.").arg(name),
                                              QStringLiteral("Write host, starttls://host or tls://host.")));
        surveys.report.servers.push_back(server);
        return;
    }
    QElapsedTimer time;
    time.start();
    Survey survey(*parsed, server, surveys);
    if (survey.open()) {
        survey.tellOfClearText();
        surveys.tell(QStringLiteral("Searching at %1").arg(parsed->host));
        if (survey.findBase(base)) {
            survey.findSomebody(base, member);
        }
        server.milliseconds = time.elapsed();
        if (parsed->security == Security::WhenOffered && !server.encryption.isEmpty()) {
            tryProof(*parsed, server, surveys);
        }
        addEndOfCertificate(server, surveys.report.findings);
    }
    surveys.report.servers.push_back(server);
}

} // namespace doctor
