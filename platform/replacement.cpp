#include "platform/replacement.h"

#include "platform/runtime_error.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

void writeAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.number(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            throw RuntimeError(writingErrorNumber(errno));
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void putInPlace(const FileDescriptor& file, const std::string& path, const std::string& target,
                Existing existing) {
    // Before the name is given, so that a loss of power cannot leave it with nothing behind it.
    waitForDisk(file);
    const bool placed = existing == Existing::Replace ? std::rename(path.c_str(), target.c_str()) == 0
                                                      : ::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD,
                                                                    target.c_str(), RENAME_NOREPLACE) == 0;
    if (!placed) {
        throw RuntimeError(openingErrorNumber(errno));
    }
    waitForFolderOf(target, file);
}

void removeIfStillNamed(const FileDescriptor& file, const std::string& path) noexcept {
    struct stat named {};

    struct stat own {};

    if (::fstat(file.number(), &own) == 0 && ::lstat(path.c_str(), &named) == 0 &&
        named.st_dev == own.st_dev && named.st_ino == own.st_ino) {
        ::unlink(path.c_str());
    }
}

Replacement::Replacement(std::string target, mode_t rights) : target_(std::move(target)) {
    constexpr int attempts = 1000;
    const std::size_t separator = target_.rfind('/');
    const std::string folder = separator == std::string::npos ? "./" : target_.substr(0, separator + 1);
    // A process that was ended on the way may have left a file of that name, and so may another computer. The
    // target's own name is no part of it: that may be the longest that there is.
    for (int attempt = 0; attempt < attempts && !file_.isOpen(); ++attempt) {
        path_ = folder + ".brindlewake-" + std::to_string(::getpid()) + '-' + std::to_string(attempt);
        file_ = FileDescriptor(::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, rights));
        if (!file_.isOpen() && errno != EEXIST) {
            break;
        }
    }
    if (!file_.isOpen()) {
        throw RuntimeError(openingErrorNumber(errno));
    }
}

Replacement::~Replacement() {
    if (!placed_) {
        removeIfStillNamed(file_, path_);
    }
}

void Replacement::takePlace(Existing existing) {
    // Only the wait for the folder can fail after the name is given; nothing is to be removed then either,
    // since the file no longer has its first name.
    putInPlace(file_, path_, target_, existing);
    placed_ = true;
}

} // namespace platform
