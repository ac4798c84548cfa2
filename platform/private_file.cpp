#include "platform/private_file.h"

#include "platform/runtime_error.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {
constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
// Opening a pipe or a device must neither wait nor make a terminal the program's own.
constexpr int kAlways = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

std::string systemPath(const QString& nativePath) {
    if (nativePath.contains(QChar(u'\0'))) {
        throw RuntimeError(errors::PathFileAccess);
    }
    return QFile::encodeName(nativePath).toStdString();
}

void requireOwnPlainFile(const struct stat& status) {
    if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid() || status.st_nlink > 1) {
        throw RuntimeError(errors::PathFileAccess);
    }
}

struct stat statusOf(const FileDescriptor& file) {
    struct stat status {};

    if (::fstat(file.number(), &status) != 0) {
        throw RuntimeError(openingErrorNumber(errno));
    }
    return status;
}

bool isSameFile(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/** Opens a file that is there, without changing it yet; nothing when there is none. */
std::optional<FileDescriptor> openExisting(const std::string& path, int access) {
    struct stat status {};

    if (::lstat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throw RuntimeError(openingErrorNumber(errno));
    }
    // Checked before opening, because opening a device may already set it in motion, and again afterwards,
    // because another file may have come in its place meanwhile.
    requireOwnPlainFile(status);
    FileDescriptor file(::open(path.c_str(), access | O_NOFOLLOW | kAlways));
    if (!file.isOpen()) {
        throw RuntimeError(openingErrorNumber(errno));
    }
    requireOwnPlainFile(statusOf(file));
    return file;
}

FileDescriptor createNew(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kAlways, kOwnerOnly));
    if (!file.isOpen()) {
        throw RuntimeError(openingErrorNumber(errno));
    }
    return file;
}

/** Locks the file until it is closed. True when no other output has it, and the path still leads to it. */
bool lockForItself(const FileDescriptor& file, const std::string& path) {
    struct stat named {};

    // The output that had the lock before may have put another file in this one's place.
    return ::flock(file.number(), LOCK_EX | LOCK_NB) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           isSameFile(statusOf(file), named);
}

/** Takes away all rights that an older file gives, except the owner's to read and write. */
void makePrivate(const FileDescriptor& file) {
    const mode_t mode = statusOf(file).st_mode & static_cast<mode_t>(ALLPERMS);
    if ((mode & ~kOwnerOnly) == 0 || ::fchmod(file.number(), mode & kOwnerOnly) == 0) {
        return;
    }
    // The file systems of memory sticks keep no rights; there the rights of the whole stick hold.
    if (errno != EPERM && errno != EOPNOTSUPP) {
        throw RuntimeError(openingErrorNumber(errno));
    }
}
} // namespace

RegularInput::RegularInput(const QString& nativePath) {
    const std::string path = systemPath(nativePath);

    struct stat status {};

    if (::stat(path.c_str(), &status) != 0) {
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        // A link that leads nowhere does exist, so it is not a missing file.
        if (missing && ::lstat(path.c_str(), &status) != 0) {
            throw RuntimeError(errors::FileNotFound);
        }
        throw RuntimeError(errors::PathFileAccess);
    }
    FileDescriptor file;
    if (S_ISREG(status.st_mode)) {
        file = FileDescriptor(::open(path.c_str(), O_RDONLY | kAlways));
    }
    if (!file.isOpen()) {
        throw RuntimeError(errors::PathFileAccess);
    }
    status = statusOf(file);
    if (!S_ISREG(status.st_mode)) {
        throw RuntimeError(errors::PathFileAccess);
    }
    size_ = status.st_size;
    file_ = std::make_shared<const FileDescriptor>(std::move(file));
}

RegularInput::RegularInput(HeldFile file) : file_(std::move(file)), size_(statusOf(*file_).st_size) {}

std::string_view RegularInput::read(std::span<char> buffer) {
    ssize_t bytes = -1;
    do {
        // Reads by position, because others who hold the file may have moved the descriptor's own.
        bytes = ::pread(file_->number(), buffer.data(), buffer.size(), bytesRead_);
    } while (bytes < 0 && errno == EINTR);
    if (bytes < 0) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    bytesRead_ += bytes;
    if (bytesRead_ > size_ || (bytes == 0 && bytesRead_ < size_)) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    return {buffer.data(), static_cast<std::size_t>(bytes)};
}

void RegularInput::rewind() {
    if (statusOf(*file_).st_size != size_) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    bytesRead_ = 0;
}

bool RegularInput::isFileOf(const QString& nativePath) const {
    struct stat other {};

    return ::stat(systemPath(nativePath).c_str(), &other) == 0 && isSameFile(statusOf(*file_), other);
}

PrivateOutput::PrivateOutput(const QString& nativePath, Writing writing, Existing existing)
    : path_(systemPath(nativePath)), existing_(existing) {
    if (writing == Writing::BesideTarget) {
        openBeside();
    } else {
        openInPlace();
    }
}

PrivateOutput::~PrivateOutput() {
    if (!finished_ && !replacement_) {
        removeIfStillNamed(file_, path_);
    }
}

/** False when another output has the file. */
bool PrivateOutput::openForItself() {
    auto existing = existing_ == Existing::Replace ? openExisting(path_, O_RDWR) : std::nullopt;
    file_ = existing ? *std::move(existing) : createNew(path_);
    return lockForItself(file_, path_);
}

void PrivateOutput::openInPlace() {
    if (!openForItself()) {
        openBeside();
        // Nobody else can have the new one yet; where files cannot be locked, none is ever written in place.
        static_cast<void>(::flock(file().number(), LOCK_EX | LOCK_NB));
        return;
    }
    makePrivate(file_);
    bytesBefore_ = statusOf(file_).st_size;
}

void PrivateOutput::openBeside() {
    struct stat status {};

    if (existing_ == Existing::Refuse && ::lstat(path_.c_str(), &status) == 0) {
        throw RuntimeError(errors::PathFileAccess);
    }
    // Replacing a file needs rights to its folder only. A file that the user may not write must not be
    // replaced either.
    openExisting(path_, O_WRONLY);
    replacement_.emplace(path_, kOwnerOnly);
}

void PrivateOutput::write(std::string_view bytes) {
    writeAll(file(), bytes);
    bytesWritten_ += static_cast<std::int64_t>(bytes.size());
}

void PrivateOutput::finish() {
    // A file that is written in place is cut here: to empty it first would only give its space away for it
    // to be asked for again.
    const std::int64_t expected =
        replacement_ ? bytesBefore_ + bytesWritten_ : std::max(bytesBefore_, bytesWritten_);
    if (statusOf(file()).st_size != expected) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    if (expected != bytesWritten_ && ::ftruncate(file().number(), bytesWritten_) != 0) {
        throw RuntimeError(writingErrorNumber(errno));
    }
    // A network's disk may tell only at closing that it is full. A second descriptor is closed to hear it,
    // as the first one is needed for undoing.
    const int second = ::dup(file().number());
    if (second < 0 || ::close(second) != 0) {
        throw RuntimeError(writingErrorNumber(errno));
    }
    if (replacement_) {
        replacement_->takePlace(existing_);
    }
    finished_ = true;
}

} // namespace platform
