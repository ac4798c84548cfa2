#include "platform/sequential_file.h"

#include "platform/file_descriptor.h"
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
/** What is to be replaced. */
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
        // A link that leads nowhere is there.
        if (::lstat(given.c_str(), &status) == 0) {
            throw RuntimeError(errors::PathFileAccess);
        }
        return {given, std::nullopt};
    }
    // Replacing needs rights to the folder only; what may not be written into is not replaced either.
    if (::stat(resolved.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        ::faccessat(AT_FDCWD, resolved.get(), W_OK, AT_EACCESS) != 0) {
        throw RuntimeError(errors::PathFileAccess);
    }
    return {resolved.get(), status};
}

std::string folderOf(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? "./" : path.substr(0, separator + 1);
}

/** A new file beside the target; it goes again unless it has taken the target's place. */
class Replacement {
  public:
    explicit Replacement(const std::string& folder);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    void takeRightsOf(const struct stat& old);
    void write(std::string_view bytes);
    void takePlaceOf(const std::string& target);

  private:
    std::string path_;
    FileDescriptor file_;
    bool placed_ = false;
};

Replacement::Replacement(const std::string& folder) {
    constexpr int attempts = 1000;
    // Without the right for everybody to write: such a file would not be read again.
    constexpr mode_t rights = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH;
    // A process that was ended on the way may have left a file of that name, and so may another computer.
    for (int attempt = 0; attempt < attempts && !file_.isOpen(); ++attempt) {
        path_ = folder + ".brindlewake-" + std::to_string(::getpid()) + '-' + std::to_string(attempt);
        file_ = FileDescriptor(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights));
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
        ::unlink(path_.c_str());
    }
}

void Replacement::takeRightsOf(const struct stat& old) {
    constexpr auto nobody = static_cast<uid_t>(-1);
    mode_t mode = old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    // Only an administrator gives a file away; otherwise it belongs to whoever wrote it last, who may.
    static_cast<void>(!::fchown(file_.number(), old.st_uid, static_cast<gid_t>(-1)));
    if (::fchown(file_.number(), nobody, old.st_gid) != 0) {
        // What the old group was allowed is not another group's; that gets what everybody gets.
        mode = (mode & ~static_cast<mode_t>(S_IRWXG)) | ((mode & S_IRWXO) << 3U);
    }
    // The file systems of memory sticks keep no rights; there the rights of the whole stick hold.
    if (::fchmod(file_.number(), mode) != 0 && errno != EPERM && errno != EOPNOTSUPP) {
        throw RuntimeError(writingErrorNumber(errno));
    }
}

void Replacement::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file_.number(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            throw RuntimeError(writingErrorNumber(errno));
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

void Replacement::takePlaceOf(const std::string& target) {
    // Before the name is moved, so that a loss of power cannot leave the new name with nothing in it.
    waitForDisk(file_);
    if (::rename(path_.c_str(), target.c_str()) != 0) {
        throw RuntimeError(openingErrorNumber(errno));
    }
    placed_ = true;
    waitForFolderOf(target, file_);
}
} // namespace

void writeWholeFile(const QString& path, const std::string& content) {
    const Target target = targetOf(path);
    Replacement replacement(folderOf(target.path));
    if (target.status) {
        replacement.takeRightsOf(*target.status);
    }
    replacement.write(content);
    replacement.takePlaceOf(target.path);
}

} // namespace platform
