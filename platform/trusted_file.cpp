#include "platform/trusted_file.h"

#include "platform/runtime_error.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {
[[noreturn]] void refuse() {
    throw RuntimeError(errors::PathFileAccess);
}

/** Raises error 53 only when the given name itself is missing. A link that leads nowhere does exist. */
[[noreturn]] void refuseMissing(bool behindALink) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    throw RuntimeError(missing && !behindALink ? errors::FileNotFound : openingErrorNumber(errno));
}

bool liesWhereRightsAreKept(const FileDescriptor& file) noexcept {
    struct statfs system {};

    return ::fstatfs(file.number(), &system) != 0 || keepsRights(std::int64_t{system.f_type});
}

struct stat statusOrRefusal(const FileDescriptor& file) {
    struct stat status {};

    if (::fstat(file.number(), &status) != 0) {
        refuse();
    }
    return status;
}

bool everybodyMayWrite(const FileDescriptor& fileOrFolder) {
    return (statusOrRefusal(fileOrFolder).st_mode & S_IWOTH) != 0 && liesWhereRightsAreKept(fileOrFolder);
}

/** Refuses an entry that another user may have put into a folder where everybody may write. */
void mustNotBeAStrangers(const struct stat& entry, const FileDescriptor& folder) {
    const bool strangers = entry.st_uid != 0 && entry.st_uid != ::geteuid();
    if (strangers && everybodyMayWrite(folder)) {
        refuse();
    }
}

/**
 * A name in its folder. The folder is opened once, so that everything asked about the name is asked of the
 * same folder.
 */
class NameInFolder {
  public:
    explicit NameInFolder(const std::string& path) { go(AT_FDCWD, path); }

    const FileDescriptor& folder() const noexcept { return folder_; }

    bool behindALink() const noexcept { return links_ > 0; }

    /** The file or link of that name itself. */
    struct stat entry() const {
        struct stat status {};

        if (::fstatat(folder_.number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            refuseMissing(behindALink());
        }
        return status;
    }

    /** Goes on to where the link of that name leads. */
    void follow() {
        constexpr int maximumLinks = 40;
        std::array<char, 4096> target{};
        const ssize_t length = ::readlinkat(folder_.number(), name_.c_str(), target.data(), target.size());
        if (++links_ > maximumLinks || length < 0 || static_cast<std::size_t>(length) == target.size()) {
            refuse();
        }
        const FileDescriptor from = std::move(folder_);
        go(from.number(), std::string(target.data(), static_cast<std::size_t>(length)));
    }

    /** Opens the file of that name; a link that has taken its place meanwhile is not followed. */
    FileDescriptor open() const {
        FileDescriptor file(::openat(folder_.number(), name_.c_str(),
                                     O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (!file.isOpen()) {
            refuseMissing(behindALink());
        }
        return file;
    }

  private:
    void go(int base, const std::string& path) {
        const std::size_t nameBegin = path.rfind('/') + 1;
        const std::string folder = nameBegin == 0 ? "." : path.substr(0, nameBegin);
        name_ = path.substr(nameBegin);
        folder_ = FileDescriptor(::openat(base, folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder_.isOpen()) {
            refuseMissing(behindALink());
        }
    }

    FileDescriptor folder_;
    std::string name_;
    int links_ = 0;
};
} // namespace

bool keepsRights(std::int64_t fileSystemType) noexcept {
    // File systems of memory sticks and of other systems' disks; the numbers are from linux/magic.h and the
    // drivers. All files on one have the rights that it was mounted with, which often let everybody write.
    // NTFS may also come through FUSE.
    constexpr std::int64_t msdos = 0x4d44;
    constexpr std::int64_t exfat = 0x2011bab0;
    constexpr std::int64_t ntfs = 0x5346544e;
    constexpr std::int64_t ntfs3 = 0x7366746e;
    constexpr std::int64_t fuse = 0x65735546;
    constexpr std::array without{msdos, exfat, ntfs, ntfs3, fuse};
    return std::find(without.begin(), without.end(), fileSystemType) == without.end();
}

FileDescriptor openTrusted(const QString& nativePath) {
    const std::string path = QFile::encodeName(nativePath).toStdString();
    if (path.find('\0') != std::string::npos) {
        refuse();
    }
    NameInFolder place(path);
    struct stat entry = place.entry();
    for (; S_ISLNK(entry.st_mode); entry = place.entry()) {
        mustNotBeAStrangers(entry, place.folder());
        place.follow();
    }
    // Checked before opening, because opening a device may already set it in motion, and again afterwards,
    // because another file may have come in its place meanwhile.
    if (!S_ISREG(entry.st_mode)) {
        refuse();
    }
    FileDescriptor file = place.open();
    entry = statusOrRefusal(file);
    if (!S_ISREG(entry.st_mode) || everybodyMayWrite(file)) {
        refuse();
    }
    mustNotBeAStrangers(entry, place.folder());
    return file;
}

} // namespace platform
