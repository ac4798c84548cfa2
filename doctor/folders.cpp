// The drives, and whether the program could write where it will want to.

#include "doctor/places.h"
#include "email/box_texts.h"
#include "email/own_files.h"
#include "platform/drives.h"
#include "platform/only_program.h"
#include "platform/runtime_error.h"
#include "platform/user_folders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace doctor {

namespace errors = platform::errors;

namespace {
Finding about(Grade grade, const QString& text, const QString& advice = {}) {
    Finding finding;
    finding.grade = grade;
    finding.about = QStringLiteral("folders");
    finding.text = text;
    finding.advice = advice;
    return finding;
}

Finding failing(int number, const QString& box, const QString& text, const QString& advice) {
    Finding finding = about(Grade::Met, text, advice);
    finding.number = number;
    finding.box = box;
    return finding;
}

void addDrives(std::vector<Finding>& findings) {
    QStringList ready;
    for (const platform::Drive& drive : platform::drives()) {
        ready.append(drive.ready ? QStringLiteral("%1: is %2").arg(drive.letter).arg(drive.folder)
                                 : QStringLiteral("%1: is not ready").arg(drive.letter));
    }
    findings.push_back(
        about(Grade::Info, QStringLiteral("Drives: ") + ready.join(QStringLiteral(", ")) + u'.'));
}

/** Why the program would refuse to write over this file of its own; empty when it would not. */
QString whyNotReplaceable(const QString& path) {
    struct stat status {};

    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    const bool plain = S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == ::geteuid();
    return plain ? QString()
                 : QStringLiteral("%1 is a link, has a second name, or belongs to somebody else").arg(path);
}

void addCurrentFolder(std::vector<Finding>& findings) {
    QString why = whyNotWritable(QDir::currentPath());
    why = why.isEmpty() ? whyNotReplaceable(QLatin1String(email::kEncodedAttachmentFileName)) : why;
    if (!why.isEmpty()) {
        findings.push_back(
            failing(errors::PathFileAccess, email::boxOfFailedOpening(errors::PathFileAccess),
                    QStringLiteral("A message with an attachment cannot be opened: %1.").arg(why),
                    QStringLiteral("Let each member start the program in a folder of their own.")));
    }
    bool works = false;
    if (platform::errorNumberOf([&works] { works = platform::OnlyProgram::worksHere(); }) == 0 && works) {
        Finding finding =
            about(Grade::Met,
                  QStringLiteral("The program runs in this folder already, so that a second start "
                                 "there brings its window up and ends."),
                  QStringLiteral("Use it there, or end it."));
        finding.box = email::boxOfHiddenProgram();
        findings.push_back(finding);
    }
}

void addSaveDirectory(const email::Settings& settings, std::vector<Finding>& findings) {
    QString path;
    const int error = platform::errorNumberOf(
        [&] { path = platform::nativePath(settings.SaveDirectory + QStringLiteral("report.txt")); });
    if (error != 0) {
        findings.push_back(failing(error, email::boxOfFailedSaving(error),
                                   QStringLiteral("SaveDirectory, %1, leads nowhere: its drive is not ready.")
                                       .arg(settings.SaveDirectory),
                                   QStringLiteral("Put a stick in, or set SaveDirectory to C:\\.")));
        return;
    }
    const QString why = whyNotWritable(QFileInfo(path).path());
    if (!why.isEmpty()) {
        findings.push_back(failing(
            errors::PathFileAccess, email::boxOfFailedSaving(errors::PathFileAccess),
            QStringLiteral("Attachments cannot be saved: %1.").arg(why),
            QStringLiteral("Make the folder and let members write it, or set SaveDirectory to C:\\.")));
    }
}

void addSendingFolder(const email::Settings& settings, std::vector<Finding>& findings) {
    if (!email::isYes(settings.SendAttachments)) {
        return;
    }
    QString path;
    const int error = platform::errorNumberOf(
        [&path] { path = platform::nativePath(QLatin1String(email::kEncodedOutgoingFileName)); });
    QString why =
        error != 0 ? QStringLiteral("the drive C: is not ready") : whyNotWritable(QFileInfo(path).path());
    why = why.isEmpty() ? whyNotReplaceable(path) : why;
    if (!why.isEmpty()) {
        const int number = error != 0 ? error : errors::PathFileAccess;
        findings.push_back(failing(number, email::boxOfFailedSending(number),
                                   QStringLiteral("Letters with a file cannot be sent: %1.").arg(why),
                                   QStringLiteral("Let members write the folder that C: stands for.")));
    }
}

void addKeptLetters(std::vector<Finding>& findings) {
    const QString why = whyNotWritable(platform::stateFolderPath(), true);
    if (!why.isEmpty()) {
        findings.push_back(
            failing(errors::PathFileAccess, email::noteOfUnkeptLetter(errors::PathFileAccess),
                    QStringLiteral("Letters that are being written cannot be kept: %1.").arg(why),
                    QStringLiteral("Give the folder to the member.")));
    }
}
} // namespace

QString whyNotWritable(const QString& nativeFolder, bool isMade) {
    QString folder = nativeFolder;
    while (isMade && !QFileInfo::exists(folder) && folder.lastIndexOf(u'/') > 0) {
        folder.truncate(folder.lastIndexOf(u'/'));
    }
    const QFileInfo info(folder);
    if (!info.exists()) {
        return QStringLiteral("there is no folder %1").arg(folder);
    }
    if (!info.isDir()) {
        return QStringLiteral("%1 is no folder").arg(folder);
    }
    if (isMade && info.ownerId() != ::geteuid() && folder == nativeFolder) {
        return QStringLiteral("%1 belongs to %2").arg(folder, info.owner());
    }
    // The rights of the process itself count, and a file system that is mounted for reading only.
    return ::faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), W_OK | X_OK, AT_EACCESS) == 0
               ? QString()
               : QStringLiteral("%1: %2").arg(folder, QString::fromLocal8Bit(std::strerror(errno)));
}

std::vector<Finding> findingsOfFolders(const email::Settings& settings) {
    std::vector<Finding> findings;
    if (::geteuid() == 0) {
        findings.push_back(about(
            Grade::Info, QStringLiteral("The folders were looked at as root, who may write everywhere."),
            QStringLiteral("Run the doctor as a member to learn of the rights.")));
    }
    addDrives(findings);
    addCurrentFolder(findings);
    addSaveDirectory(settings, findings);
    addSendingFolder(settings, findings);
    addKeptLetters(findings);
    return findings;
}

} // namespace doctor
