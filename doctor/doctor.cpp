#include "doctor/doctor.h"

#include "doctor/directory_survey.h"
#include "doctor/mailbox_survey.h"
#include "doctor/places.h"
#include "doctor/pop3_survey.h"
#include "doctor/settings_seen.h"
#include "doctor/smtp_survey.h"
#include "doctor/surroundings.h"
#include "email/credentials.h"
#include "email/shared_settings.h"
#include "email/typed_host.h"
#include "platform/text.h"

#include <QDir>

#include <algorithm>
#include <iterator>

namespace doctor {

namespace {
void append(std::vector<Finding> more, Report& report) {
    std::ranges::move(more, std::back_inserter(report.findings));
}

/** The host of a name that was typed as name@host is another than the settings have. */
void addTypedHost(Report& report) {
    if (!email::serversOfFile) {
        return;
    }
    Finding finding;
    finding.about = QStringLiteral("settings");
    finding.text =
        QStringLiteral("The host that was typed behind the @ takes the place of lines 3 and 4: the "
                       "servers are %1 and %2, and members send as %3.")
            .arg(email::settings.POPServer, email::sendingServer(), email::derived.AtDomain);
    finding.advice = QStringLiteral("What is said of lines 3 and 4 holds for what was typed.");
    report.findings.push_back(finding);
}

void examineServers(const Order& order, Report& report) {
    Surveys surveys{report, order.patience, order.progress};
    surveys.secrets.addPassword(platform::toBytes(order.password));
    const email::Credentials& who = email::credentials;
    const Member member{platform::toBytes(who.UserName), platform::toBytes(who.Password)};
    surveyPop3(
        email::settings.POPServer, order.user.isEmpty() ? nullptr : &member,
        [&](poplib::POP& pop, ServerSeen& /*server*/) { surveyMailbox(pop, order.mode, surveys); }, surveys);
    surveySmtp(email::sendingServer(),
               order.user.isEmpty()
                   ? smtplib::Account()
                   : smtplib::Account{member.user, member.password, platform::toBytes(who.NameAtHost)},
               surveys);
    const email::Settings& is = email::settings;
    if (email::isYes(is.ShowDatabase) && is.AddressLookup == QLatin1String("Directory Server")) {
        surveyDirectory(is.LDAPServer, is.LDAPSearchBase, order.user.isEmpty() ? nullptr : &member, surveys);
    }
}
} // namespace

Report examine(const Order& order) {
    Report report;
    report.folder = QDir::currentPath();
    report.mode = order.mode == MailMode::House ? QStringLiteral("house") : QStringLiteral("standard");
    const SettingsRead read = readSettingsFile();
    report.settings = settingsSeen(read);
    append(findingsOf(read), report);
    append(findingsOfRights(read.error), report);
    append(findingsOfFolders(read.settings), report);
    append(findingsOfSurroundings(read.settings), report);
    // The program does not come to its servers without settings.
    if (read.error == 0) {
        email::settings = read.settings;
        email::derived = read.derived;
        email::credentials = {};
        email::serversOfFile.reset();
        if (!order.user.isEmpty()) {
            email::takeTypedUserName(order.user);
            email::credentials.Password = order.password;
            addTypedHost(report);
        }
        examineServers(order, report);
    }
    return report;
}

} // namespace doctor
