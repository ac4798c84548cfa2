// Who may change the settings file.

#include "doctor/places.h"
#include "email/box_texts.h"
#include "platform/runtime_error.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace doctor {

namespace {
Finding aboutRights(Grade grade, const QString& text, const QString& advice) {
    Finding finding;
    finding.grade = grade;
    finding.about = QStringLiteral("settings");
    finding.text = text;
    finding.advice = advice;
    return finding;
}

bool mayAnybodyWrite(const QString& path) {
    struct stat status {};

    return ::stat(QFile::encodeName(path).constData(), &status) == 0 && (status.st_mode & S_IWOTH) != 0;
}

/** What stands behind a file that the program refuses, as far as it can be seen. */
void addReason(const QFileInfo& file, std::vector<Finding>& findings) {
    const auto stops = [&](const QString& text, const QString& advice) {
        findings.push_back(aboutRights(Grade::Stops, text, advice));
        findings.back().number = platform::errors::PathFileAccess;
        findings.back().box = email::boxOfFailedStart(platform::errors::PathFileAccess);
    };
    const QString folder = QFileInfo(file.canonicalFilePath()).path();
    if (file.isSymLink() && !file.exists()) {
        stops(QStringLiteral("tolk.ini is a link to %1, which is not there.").arg(file.symLinkTarget()),
              QStringLiteral("Mount the shared folder, or correct the link."));
    } else if (file.isDir()) {
        stops(QStringLiteral("tolk.ini is a folder."), QStringLiteral("Put the file in its place."));
    } else if (mayAnybodyWrite(file.filePath())) {
        stops(QStringLiteral(
                  "Everybody may write tolk.ini, so anybody may have named a server for the passwords."),
              QStringLiteral("Look through the file, then: chmod o-w %1").arg(file.canonicalFilePath()));
    } else if (!file.isReadable()) {
        stops(QStringLiteral("tolk.ini may not be read."),
              QStringLiteral("chmod a+r %1").arg(file.canonicalFilePath()));
    } else if (mayAnybodyWrite(folder) || mayAnybodyWrite(file.path())) {
        stops(QStringLiteral("tolk.ini belongs to somebody else, in a folder where everybody may write."),
              QStringLiteral("Look through the file, then: chmod o-w %1").arg(folder));
    }
}

/** Rights that the program accepts, and an administrator may not have meant. */
void addRights(const QFileInfo& file, std::vector<Finding>& findings) {
    const QFileInfo target(file.canonicalFilePath());
    for (const QString& folder : {target.path(), QFileInfo(file.absoluteFilePath()).path()}) {
        if (mayAnybodyWrite(folder)) {
            findings.push_back(aboutRights(
                Grade::Met,
                QStringLiteral("Everybody may write the folder %1, and put another tolk.ini into it.")
                    .arg(folder),
                QStringLiteral("chmod o-w %1").arg(folder)));
            break;
        }
    }
    if (target.permission(QFile::WriteGroup)) {
        findings.push_back(
            aboutRights(Grade::Info, QStringLiteral("The group %1 may change tolk.ini.").arg(target.group()),
                        QStringLiteral("chmod g-w %1, unless the group administers the program.")
                            .arg(target.filePath())));
    }
    if (target.ownerId() != 0 && target.ownerId() != ::geteuid()) {
        findings.push_back(aboutRights(
            Grade::Info, QStringLiteral("tolk.ini belongs to %1, who may change it.").arg(target.owner()),
            QStringLiteral("Give it to root, unless that user administers the program.")));
    }
}
} // namespace

std::vector<Finding> findingsOfRights(int error) {
    std::vector<Finding> findings;
    const QFileInfo file{QLatin1String(email::kSettingsFileName)};
    if (error == platform::errors::PathFileAccess) {
        addReason(file, findings);
    } else if (file.exists()) {
        addRights(file, findings);
    }
    return findings;
}

} // namespace doctor
