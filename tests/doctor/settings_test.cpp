#include "doctor/settings_seen.h"
#include "platform/runtime_error.h"
#include "tests/doctor/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {
using doctor::Finding;
using doctor::Grade;
using support::findingOf;
using support::findingWith;
using testing::IsEmpty;

const std::vector<std::string>& rightLines() {
    static const std::vector<std::string> lines = {"ShowSetup=yes",
                                                   "[MailServer Info]",
                                                   "POPServer=tls://mail.example.org",
                                                   "SMTPServer=starttls://smtp.example.org",
                                                   "DomainName=example.org",
                                                   "[Institution Properties]",
                                                   "Institution=Example School",
                                                   "[Application Options]",
                                                   "PlayWav=no",
                                                   "ShowDatabase=no",
                                                   "SendAttachments=yes",
                                                   "SaveDirectory=C:\\",
                                                   "AllowPrinting=yes",
                                                   "SaveCopy=no",
                                                   "ShowGetMail=yes",
                                                   "GetMailEvery=5",
                                                   "LDAPServer=directory.example.org",
                                                   "LDAPSearchBase=c=us",
                                                   "AddressLookup=Personal Address Book"};
    return lines;
}

doctor::SettingsRead readLines(const std::vector<std::string>& lines) {
    std::size_t next = 0;
    return doctor::readSettings([&lines, next]() mutable {
        if (next == lines.size()) {
            throw platform::RuntimeError(platform::errors::InputPastEndOfFile);
        }
        return lines[next++];
    });
}

/** What is found when a line, which counts from 1, is another one. */
std::vector<Finding> findingsWithLine(std::size_t number, const std::string& line) {
    std::vector<std::string> lines = rightLines();
    lines.at(number - 1) = line;
    return findingsOf(readLines(lines));
}

/** The findings about this line but those for information. */
std::vector<Finding> warningsOf(int line, const std::vector<Finding>& findings) {
    std::vector<Finding> warnings;
    for (const Finding& finding : findings) {
        if (finding.line == line && finding.grade != Grade::Info) {
            warnings.push_back(finding);
        }
    }
    return warnings;
}

TEST(DoctorsSettings, HaveNothingToTellOfAGoodFile) {
    EXPECT_THAT(findingsOf(readLines(rightLines())), IsEmpty());
}

TEST(DoctorsSettings, TellEachKeyWithItsLineItsValueAndWhatFollows) {
    const auto seen = settingsSeen(readLines(rightLines()));
    ASSERT_EQ(seen.size(), 16U);
    EXPECT_EQ(seen[0].line, 1);
    EXPECT_EQ(seen[0].key, QStringLiteral("ShowSetup"));
    EXPECT_EQ(seen[0].value, QStringLiteral("yes"));
    EXPECT_EQ(seen[1].line, 3);
    EXPECT_EQ(seen[1].value, QStringLiteral("tls://mail.example.org"));
    EXPECT_TRUE(seen[1].meaning.contains(QStringLiteral("port 995: encrypted from the first byte")));
    EXPECT_TRUE(seen[2].meaning.contains(QStringLiteral("port 587")));
    EXPECT_EQ(seen.back().key, QStringLiteral("AddressLookup"));
    EXPECT_EQ(seen.back().line, 19);
    for (const auto& setting : seen) {
        EXPECT_FALSE(setting.meaning.isEmpty()) << setting.key.toStdString();
    }
}

TEST(DoctorsSettings, TellTheDefaultOfALineThatWasNotRead) {
    std::vector<std::string> lines = rightLines();
    lines.resize(11);
    const auto seen = settingsSeen(readLines(lines));
    ASSERT_EQ(seen.size(), 16U);
    EXPECT_EQ(seen[8].key, QStringLiteral("SaveDirectory"));
    EXPECT_EQ(seen[8].value, QStringLiteral("A:\\"));
    EXPECT_TRUE(seen[8].meaning.startsWith(QStringLiteral("Not in the file")));
}

TEST(DoctorsSettings, WarnOfASwitchThatLooksLikeYesAndCountsAsNo) {
    for (const char* const value : {"Yes", "yes ", " yes", "YES", "true", "1", ""}) {
        for (const std::size_t line : {1U, 9U, 10U, 11U, 13U, 14U, 15U}) {
            const std::string key = rightLines()[line - 1].substr(0, rightLines()[line - 1].find('='));
            const auto warnings =
                warningsOf(static_cast<int>(line), findingsWithLine(line, key + '=' + value));
            ASSERT_EQ(warnings.size(), 1U) << key << '=' << value;
            EXPECT_EQ(warnings[0].grade, Grade::Met);
            EXPECT_TRUE(warnings[0].text.contains(QStringLiteral("counts as \"no\"")));
        }
    }
}

TEST(DoctorsSettings, WarnOfAKeyThatStandsInAnothersLine) {
    std::vector<std::string> lines = rightLines();
    std::swap(lines[8], lines[10]);
    const auto findings = findingsOf(readLines(lines));
    for (const int line : {9, 11}) {
        const auto warnings = warningsOf(line, findings);
        ASSERT_EQ(warnings.size(), 1U) << line;
        EXPECT_TRUE(warnings[0].text.contains(QStringLiteral("only the line counts"))) << line;
    }
}

TEST(DoctorsSettings, ALineWithAnotherKeyThanAnyIsForInformation) {
    const auto findings = findingsWithLine(9, "Sound=yes");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].grade, Grade::Info);
    EXPECT_EQ(findings[0].line, 9);
}

TEST(DoctorsSettings, WarnOfADirectoryWithoutABackslashAtItsEnd) {
    const auto warnings = warningsOf(12, findingsWithLine(12, "SaveDirectory=C:\\mail"));
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings[0].text.contains(QStringLiteral("mailreport.txt")));
    EXPECT_THAT(findingsWithLine(12, "SaveDirectory=C:\\mail\\"), IsEmpty());
}

TEST(DoctorsSettings, FewerLinesStopMembersWithError62) {
    std::vector<std::string> lines = rightLines();
    lines.pop_back();
    const Finding finding = findingWith(62, findingsOf(readLines(lines)));
    EXPECT_EQ(finding.grade, Grade::Stops);
    EXPECT_TRUE(finding.text.contains(QStringLiteral("18 lines")));
    EXPECT_EQ(finding.box, QStringLiteral("Problem starting Brindlewake. Error# 62"));
    EXPECT_FALSE(finding.advice.isEmpty());
}

TEST(DoctorsSettings, MoreLinesAreTold) {
    std::vector<std::string> lines = rightLines();
    lines.emplace_back("More=1");
    lines.emplace_back("");
    const auto warnings = warningsOf(20, findingsOf(readLines(lines)));
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings[0].text.contains(QStringLiteral("2 lines too many")));
}

TEST(DoctorsSettings, AnInsertedLineStopsMembersWithError13AtLine16) {
    std::vector<std::string> lines = rightLines();
    lines.insert(lines.begin() + 8, "New=1");
    const auto findings = findingsOf(readLines(lines));
    const Finding finding = findingWith(13, findings);
    EXPECT_EQ(finding.grade, Grade::Stops);
    EXPECT_EQ(finding.line, 16);
    EXPECT_EQ(finding.box, QStringLiteral("Problem starting Brindlewake. Error# 13"));
    EXPECT_FALSE(warningsOf(10, findings).empty());
}

TEST(DoctorsSettings, TooManyMinutesStopMembersWithError6AndOddOnesAreMet) {
    EXPECT_EQ(findingWith(6, findingsWithLine(16, "GetMailEvery=40000")).grade, Grade::Stops);
    for (const char* const line : {"GetMailEvery=-1", "GetMailEvery=61"}) {
        EXPECT_EQ(warningsOf(16, findingsWithLine(16, line)).size(), 1U) << line;
    }
    EXPECT_THAT(findingsWithLine(16, "GetMailEvery=0"), IsEmpty());
}

TEST(DoctorsSettings, ADomainThatMakesNoAddressStopsMembersWithError20401) {
    for (const char* const line : {"DomainName=@example.org", "DomainName=", "DomainName=example org",
                                   "DomainName=example.org, example.net"}) {
        const Finding finding = findingWith(20401, findingsWithLine(5, line));
        EXPECT_EQ(finding.grade, Grade::Stops) << line;
        EXPECT_EQ(finding.line, 5) << line;
        EXPECT_EQ(finding.box, QStringLiteral("Unable to send message. Error# 20401")) << line;
    }
}

struct Name {
    const char* name;
    /** 0 for nothing but information. */
    int number;
};

TEST(DoctorsSettings, WarnOfAPop3ServerWhoseSchemeAndPortContradictEachOther) {
    for (const Name& one : {Name{"tls://h:110", 20325},
                            {"starttls://h:995", 20302},
                            {"plain://h:995", 20302},
                            {"h:25", 20302},
                            {"tls://h:993", 20302},
                            {"tls://h:995", 0},
                            {"h", 0},
                            {"h:995", 0},
                            {"starttls://h:110", 0},
                            {"tls://h:10995", 0},
                            {"plain://h", 0}}) {
        const auto warnings = warningsOf(3, findingsWithLine(3, std::string("POPServer=") + one.name));
        ASSERT_EQ(warnings.size(), one.number == 0 ? 0U : 1U) << one.name;
        if (one.number != 0) {
            EXPECT_EQ(warnings[0].number, one.number) << one.name;
            EXPECT_EQ(warnings[0].grade, Grade::Met) << one.name;
        }
    }
}

TEST(DoctorsSettings, WarnOfAnSmtpServerWhoseSchemeAndPortContradictEachOther) {
    for (const Name& one : {Name{"tls://h:25", 20325},
                            {"tls://h:587", 20325},
                            {"starttls://h:465", 20433},
                            {"plain://h:465", 20433},
                            {"h:110", 20433},
                            {"starttls://h:25", 0},
                            {"h:465", 0},
                            {"h:587", 0},
                            {"tls://h", 0}}) {
        const auto warnings = warningsOf(4, findingsWithLine(4, std::string("SMTPServer=") + one.name));
        ASSERT_EQ(warnings.size(), one.number == 0 ? 0U : 1U) << one.name;
        if (one.number != 0) {
            EXPECT_EQ(warnings[0].number, one.number) << one.name;
        }
    }
}

TEST(DoctorsSettings, ANameThatNoServerHasStopsMembersWithError26002) {
    for (const char* const name : {"", "ssl://h", "h:0", "h:port", "[::1"}) {
        const auto findings = findingsWithLine(3, std::string("POPServer=") + name);
        const Finding finding = findingWith(26002, findings);
        EXPECT_EQ(finding.grade, Grade::Stops) << name;
        EXPECT_EQ(finding.line, 3) << name;
        EXPECT_EQ(finding.box, QStringLiteral("Mail Server not found.")) << name;
    }
    EXPECT_EQ(findingWith(26002, findingsWithLine(4, "SMTPServer=ssl://h")).box,
              QStringLiteral("Unable to send message. Error# 26002"));
}
} // namespace
