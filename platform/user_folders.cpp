#include "platform/user_folders.h"

#include "platform/runtime_error.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {
constexpr mode_t kUserOnly = S_IRWXU;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

/**
 * The folder that a variable of the environment names; empty when it names none. Relative paths do not count.
 */
QString folderFromEnvironment(const char* variable) {
    const QString path = QFile::decodeName(qgetenv(variable));
    return path.startsWith(u'/') ? path : QString();
}

bool isOwnFolder(const std::string& path) {
    struct stat status {};

    return ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/** An administrator who runs the program with a member's environment must not make folders there. */
bool mayMakeFoldersIn(const std::string& path) {
    struct stat status {};

    return ::stat(path.c_str(), &status) == 0 && (::geteuid() != 0 || status.st_uid == 0);
}

/** Makes the folder, and those on the way to it, unless they are there. */
void makeFolder(const std::string& path) {
    struct stat status {};

    if (::stat(path.c_str(), &status) == 0 || path.size() <= 1) {
        return;
    }
    const std::string parent = path.substr(0, path.rfind('/'));
    makeFolder(parent);
    if (!mayMakeFoldersIn(parent + '/') || (::mkdir(path.c_str(), kUserOnly) != 0 && errno != EEXIST)) {
        throw RuntimeError(errors::PathFileAccess);
    }
}

QString below(const QString& base) {
    return base + QStringLiteral("/brindlewake");
}

UserFolder privateFolder(const QString& path) {
    const std::string system = QFile::encodeName(path).toStdString();
    makeFolder(system);
    FileDescriptor folder(::open(system.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));

    struct stat status {};

    if (!folder.isOpen() || ::fstat(folder.number(), &status) != 0 || status.st_uid != ::geteuid()) {
        throw RuntimeError(errors::PathFileAccess);
    }
    if ((status.st_mode & kOthers) != 0 && ::fchmod(folder.number(), kUserOnly) != 0) {
        throw RuntimeError(errors::PathFileAccess);
    }
    return {path, std::move(folder)};
}
} // namespace

QString stateFolderPath() {
    const QString named = folderFromEnvironment("XDG_STATE_HOME");
    return below(named.isEmpty() ? QDir::homePath() + QStringLiteral("/.local/state") : named);
}

UserFolder stateFolder() {
    return privateFolder(stateFolderPath());
}

QStringList runtimeFolderPaths() {
    QStringList paths;
    for (const QString& base :
         {folderFromEnvironment("XDG_RUNTIME_DIR"), QStringLiteral("/run/user/%1").arg(::geteuid())}) {
        if (!base.isEmpty() && isOwnFolder(QFile::encodeName(base).toStdString())) {
            paths.append(below(base));
        }
    }
    return paths;
}

UserFolder runtimeFolder() {
    for (const QString& path : runtimeFolderPaths()) {
        std::optional<UserFolder> folder;
        if (errorNumberOf([&] { folder = privateFolder(path); }) == errors::None) {
            return *std::move(folder);
        }
    }
    return stateFolder();
}

} // namespace platform
