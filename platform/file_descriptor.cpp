#include "platform/file_descriptor.h"

#include "platform/runtime_error.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {
std::string folderOf(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? "./" : path.substr(0, separator + 1);
}

template <class Wait>
void waitWith(const Wait& wait) {
    int result = -1;
    do {
        result = wait();
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EINVAL && errno != ENOTSUP) {
        throw RuntimeError(writingErrorNumber(errno));
    }
}
} // namespace

int openingErrorNumber(int systemError) noexcept {
    switch (systemError) {
    case ENOSPC:
    case EDQUOT:
        return errors::DiskFull;
    case ENOMEM:
        return errors::OutOfMemory;
    case EIO:
        return errors::DeviceInputOutput;
    case ENODEV:
    case ENOMEDIUM:
        return errors::DeviceUnavailable;
    default:
        return errors::PathFileAccess;
    }
}

int writingErrorNumber(int systemError) noexcept {
    const int number = openingErrorNumber(systemError);
    const bool rights = systemError == EACCES || systemError == EPERM || systemError == EROFS;
    return number == errors::PathFileAccess && !rights ? errors::DeviceInputOutput : number;
}

FileDescriptor::~FileDescriptor() {
    if (isOpen()) {
        ::close(number_);
    }
}

void waitForDisk(const FileDescriptor& file) {
    waitWith([&file] { return ::fsync(file.number()); });
}

void waitForFolderOf(const std::string& path, const FileDescriptor& file) {
    const FileDescriptor folder(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) {
        waitForDisk(folder);
    } else if (errno == EACCES) {
        waitWith([&file] { return ::syncfs(file.number()); });
    } else {
        throw RuntimeError(openingErrorNumber(errno));
    }
}

} // namespace platform
