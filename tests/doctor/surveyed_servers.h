#pragma once

#include "doctor/mailbox_survey.h"
#include "doctor/pop3_survey.h"
#include "doctor/smtp_survey.h"
#include "mailserver/accounts.h"
#include "tests/support/application.h"
#include "tests/support/trusted_root.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace support {
using doctor::Finding;
using doctor::Grade;
using doctor::Report;

/** Lets the doctor survey servers, and has its report. */
class DoctorsServers : public testing::Test {
  protected:
    DoctorsServers() { support::application(); }

    doctor::Surveys surveys() {
        using namespace std::chrono_literals;
        doctor::Surveys all{report, {2s, 500ms, 500ms}};
        all.secrets.addPassword(member.password);
        return all;
    }

    void pop3(const QString& name, bool logsOn = true, MailMode mode = MailMode::House) {
        const doctor::Surveys all = surveys();
        doctor::surveyPop3(
            name, logsOn ? &member : nullptr,
            [&](poplib::POP& pop, doctor::ServerSeen&) { doctor::surveyMailbox(pop, mode, all); }, all);
    }

    void smtp(const QString& name, bool logsOn = true) {
        doctor::surveySmtp(name,
                           logsOn ? smtplib::Account{member.user, member.password, {}} : smtplib::Account(),
                           surveys());
    }

    const doctor::ServerSeen& seen() const { return report.servers.back(); }

    std::vector<Finding> stops() const {
        std::vector<Finding> found;
        for (const Finding& finding : report.findings) {
            if (finding.grade == Grade::Stops) {
                found.push_back(finding);
            }
        }
        return found;
    }

    support::TrustedRoot root;
    Report report;
    doctor::Member member{"ann", std::string(mailserver::kDemoPassword)};
};

} // namespace support
