#include "platform/sequential_file.h"

#include "platform/file_descriptor.h"
#include "platform/replacement.h"
#include "platform/runtime_error.h"
#include "platform/trusted_file.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {
constexpr std::size_t kReadBytes = 64U << 10U;
}

SequentialInput::SequentialInput(const QString& path) : file_(openTrusted(path)) {}

bool SequentialInput::fill() {
    buffer_.resize(kReadBytes);
    ssize_t bytes = -1;
    do {
        bytes = ::read(file_.number(), buffer_.data(), buffer_.size());
    } while (bytes < 0 && errno == EINTR);
    if (bytes < 0) {
        throw RuntimeError(errors::DeviceInputOutput);
    }
    buffer_.resize(static_cast<std::size_t>(bytes));
    used_ = 0;
    return bytes > 0;
}

std::string SequentialInput::nextLine() {
    if (used_ == buffer_.size() && !fill()) {
        throw RuntimeError(errors::InputPastEndOfFile);
    }
    std::string line;
    for (;;) {
        const std::size_t end = buffer_.find_first_of("\r\n", used_);
        line.append(buffer_, used_, end == std::string::npos ? end : end - used_);
        if (line.size() > kMaximumLineBytes) {
            throw RuntimeError(errors::OutOfMemory);
        }
        if (end != std::string::npos) {
            const bool carriageReturn = buffer_[end] == '\r';
            used_ = end + 1;
            const bool more = used_ < buffer_.size() || fill();
            if (carriageReturn && more && buffer_[used_] == '\n') {
                ++used_;
            }
            return line;
        }
        if (!fill()) {
            return line;
        }
    }
}

namespace {
/** The file that is to be replaced. */
struct Target {
    /** The file's own path, at the end of all links. */
    std::string path;
    /** Nothing when there is no such file yet. */
    std::optional<struct stat> status;
};

Target targetOf(const QString& path) {
    if (path.contains(QChar(u'\0'))) {
        throw RuntimeError(errors::PathFileAccess);
    }
    const std::string given = QFile::encodeName(path).toStdString();

    struct stat status {};

    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(given.c_str(), nullptr),
                                                               &std::free);
    if (!resolved) {
        if (errno != ENOENT) {
            throw RuntimeError(openingErrorNumber(errno));
        }
        // A link that leads nowhere does exist, so it is not a missing file.
        if (::lstat(given.c_str(), &status) == 0) {
            throw RuntimeError(errors::PathFileAccess);
        }
        return {given, std::nullopt};
    }
    // Replacing a file needs rights to its folder only. A file that the user may not write must not be
    // replaced either.
    if (::stat(resolved.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        ::faccessat(AT_FDCWD, resolved.get(), W_OK, AT_EACCESS) != 0) {
        throw RuntimeError(errors::PathFileAccess);
    }
    return {resolved.get(), status};
}

/** Gives the new file the old one's rights and, where the system allows it, its owner and group. */
void takeRightsOf(const struct stat& old, const FileDescriptor& file) {
    constexpr auto nobody = static_cast<uid_t>(-1);
    mode_t mode = old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    // Only an administrator gives a file away; otherwise it belongs to whoever wrote it last, who may.
    static_cast<void>(!::fchown(file.number(), old.st_uid, static_cast<gid_t>(-1)));
    if (::fchown(file.number(), nobody, old.st_gid) != 0) {
        // What the old group was allowed is not another group's; that gets what everybody gets.
        mode = (mode & ~static_cast<mode_t>(S_IRWXG)) | ((mode & S_IRWXO) << 3U);
    }
    // The file systems of memory sticks keep no rights; there the rights of the whole stick hold.
    if (::fchmod(file.number(), mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) {
        throw RuntimeError(writingErrorNumber(errno));
    }
}
} // namespace

void writeWholeFile(const QString& path, const std::string& content) {
    // Without the right for everybody to write: such a file would not be read again.
    constexpr mode_t rights = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH;
    const Target target = targetOf(path);
    Replacement replacement(target.path, rights);
    if (target.status) {
        takeRightsOf(*target.status, replacement.file());
    }
    writeAll(replacement.file(), content);
    replacement.takePlace();
}

} // namespace platform
