// What is wrong with the settings by themselves.

#include "components/smtplib/address_list.h"
#include "doctor/server_names.h"
#include "doctor/settings_seen.h"
#include "email/box_texts.h"
#include "email/settings_file.h"
#include "platform/error_meanings.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "windows/setting_hints.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace doctor {

namespace errors = platform::errors;

namespace {
constexpr std::array kSwitches = {"ShowSetup",     "PlayWav",  "ShowDatabase", "SendAttachments",
                                  "AllowPrinting", "SaveCopy", "ShowGetMail"};

Finding aboutLine(Grade grade, int line, const QString& text, const QString& advice) {
    Finding finding;
    finding.grade = grade;
    finding.about = QStringLiteral("settings");
    finding.line = line;
    finding.text = text;
    finding.advice = advice;
    return finding;
}

int lineOf(const char* key) {
    const auto lines = email::settingsLines();
    return std::find_if(lines.begin(), lines.end(),
                        [key](const email::SettingsLine& line) {
                            return QLatin1String(line.key) == QLatin1String(key);
                        })
        ->number;
}

/** What stands before the line's "=", or all of a line without one. */
QString keyIn(const std::string& line) {
    return platform::fromBytes(line).section(u'=', 0, 0).trimmed();
}

/** The line that this key belongs into; 0 for what is no key. */
int lineOfKey(const QString& key) {
    for (const email::SettingsLine& line : email::settingsLines()) {
        if (key.compare(QLatin1String(line.key), Qt::CaseInsensitive) == 0) {
            return line.number;
        }
    }
    return 0;
}

void addKeys(const SettingsRead& read, std::vector<Finding>& findings) {
    const auto lines = email::settingsLines();
    const std::size_t known = std::min(read.lines.size(), lines.size());
    for (std::size_t i = 0; i < known; ++i) {
        const QString key = keyIn(read.lines[i]);
        const int number = static_cast<int>(i) + 1;
        const int belongs = lineOfKey(key);
        const QString taken = QLatin1String(lines[i].key);
        if (belongs != 0 && belongs != number) {
            findings.push_back(aboutLine(
                Grade::Met, number,
                QStringLiteral("%1 stands here, but only the line counts, and this one is that of %2.")
                    .arg(key, taken),
                QStringLiteral("Put %1 into line %2, and all 19 lines into their order.")
                    .arg(key)
                    .arg(belongs)));
        } else if (belongs == 0) {
            findings.push_back(aboutLine(
                Grade::Info, number, QStringLiteral("The program takes this line for that of %1.").arg(taken),
                QStringLiteral("Write the line as %1.")
                    .arg(lines[i].isSection ? taken : taken + QStringLiteral("=..."))));
        }
    }
}

void addSwitches(const SettingsRead& read, std::vector<Finding>& findings) {
    for (const char* const key : kSwitches) {
        const int line = lineOf(key);
        const auto value = read.value(line);
        if (!value || *value == QLatin1String("yes") || *value == QLatin1String("no")) {
            continue;
        }
        findings.push_back(aboutLine(
            Grade::Met, line,
            QStringLiteral(
                "%1 is \"%2\", which counts as \"no\": only yes counts, in lower case and with nothing "
                "before or behind it.")
                .arg(QLatin1String(key), *value),
            QStringLiteral("Write %1=yes or %1=no, with no space at the end.").arg(QLatin1String(key))));
    }
}

void addInterval(const SettingsRead& read, std::vector<Finding>& findings) {
    constexpr int most = 60; // as the setup window offers
    const int line = lineOf("GetMailEvery");
    const int minutes = read.settings.GetMailEvery;
    if (read.value(line) && (minutes < 0 || minutes > most)) {
        findings.push_back(aboutLine(
            Grade::Met, line, QStringLiteral("%1 minutes between two checks for new mail.").arg(minutes),
            QStringLiteral("Write 0 for no checks, or 1 to %1 minutes.").arg(most)));
    }
}

void addDirectory(const SettingsRead& read, std::vector<Finding>& findings) {
    const int line = lineOf("SaveDirectory");
    const QString hint =
        read.value(line) ? hintOfAttachmentDirectory(read.settings.SaveDirectory) : QString();
    if (!hint.isEmpty()) {
        findings.push_back(
            aboutLine(Grade::Met, line, hint, QStringLiteral("Put a \\ at the end of SaveDirectory.")));
    }
}

void addDomain(const SettingsRead& read, std::vector<Finding>& findings) {
    const int line = lineOf("DomainName");
    if (!read.value(line)) {
        return;
    }
    const std::string sender = "member" + platform::toBytes(read.derived.AtDomain);
    std::size_t addresses = 0;
    int error = platform::errorNumberOf([&] { addresses = smtplib::parseAddressList(sender).size(); });
    error = error == 0 && addresses != 1 ? errors::BadAddress : error;
    if (error != 0) {
        Finding finding =
            aboutLine(Grade::Stops, line,
                      QStringLiteral("%1 is no address, so nothing can be sent: DomainName is what "
                                     "follows the @, and has none itself.")
                          .arg(platform::fromBytes(sender)),
                      QStringLiteral("Write the domain alone, as in DomainName=example.org."));
        finding.number = error;
        finding.box = email::boxOfFailedSending(error);
        findings.push_back(finding);
    }
}

void addServers(const SettingsRead& read, std::vector<Finding>& findings) {
    const int popLine = lineOf("POPServer");
    const int smtpLine = lineOf("SMTPServer");
    if (read.value(popLine)) {
        std::ranges::move(findingsOfPopServer(read.settings.POPServer, popLine),
                          std::back_inserter(findings));
    }
    if (read.value(smtpLine)) {
        std::ranges::move(findingsOfSmtpServer(read.settings.SMTPServer, smtpLine),
                          std::back_inserter(findings));
    }
}

/** What to do when the reading has ended with this error. */
QString adviceOnReading(int error) {
    switch (error) {
    case errors::FileNotFound:
        return QStringLiteral(
            "Start the program in the folder with tolk.ini, or write one in the setup window.");
    case errors::InputPastEndOfFile:
        return QStringLiteral("Put the missing lines back, in their order: there are 19.");
    case errors::TypeMismatch:
        return QStringLiteral("Correct line 16; a line may have been inserted above it.");
    case errors::Overflow:
        return QStringLiteral("Correct line 16: minutes from 0 to 60.");
    case errors::PathFileAccess:
        return QStringLiteral(
            "Let members read the file, let nobody else write it and its folder (chmod o-w), and "
            "mount the folder that a link leads to.");
    default:
        return QStringLiteral("Write the file anew, in the setup window.");
    }
}

void addFailure(const SettingsRead& read, std::vector<Finding>& findings) {
    if (read.error == 0) {
        return;
    }
    const bool isLine16 = read.error == errors::TypeMismatch || read.error == errors::Overflow;
    const int line = isLine16 ? static_cast<int>(read.lines.size()) : 0;
    QString text = QString::fromStdString(platform::meaningOf(read.error));
    if (read.error == errors::InputPastEndOfFile) {
        text = QStringLiteral("The settings have %1 lines, and need 19.").arg(read.lines.size());
    } else if (read.error == errors::FileNotFound) {
        text = QStringLiteral("There is no tolk.ini in this folder.");
    }
    Finding finding = aboutLine(Grade::Stops, line, text, adviceOnReading(read.error));
    finding.number = read.error;
    finding.box = email::boxOfFailedStart(read.error);
    findings.push_back(finding);
}

void addLinesBehind(const SettingsRead& read, std::vector<Finding>& findings) {
    if (read.linesBehind > 0) {
        const auto last = static_cast<int>(email::settingsLines().size());
        findings.push_back(aboutLine(
            Grade::Met, last + 1,
            QStringLiteral("The file has %1 lines too many; the program reads the first %2.")
                .arg(read.linesBehind)
                .arg(last),
            QStringLiteral("Take out what was inserted, since only a line's place tells what it is.")));
    }
}
} // namespace

std::vector<Finding> findingsOf(const SettingsRead& read) {
    std::vector<Finding> findings;
    addFailure(read, findings);
    addLinesBehind(read, findings);
    addKeys(read, findings);
    addSwitches(read, findings);
    addServers(read, findings);
    addDomain(read, findings);
    addDirectory(read, findings);
    addInterval(read, findings);
    return findings;
}

} // namespace doctor
