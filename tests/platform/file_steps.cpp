#include "tests/platform/file_steps.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace support {

namespace {
FileSteps* current = nullptr;
} // namespace

FileSteps::FileSteps(std::optional<Trouble> trouble) : trouble_(trouble) {
    current = this;
}

FileSteps::~FileSteps() {
    current = nullptr;
}

std::optional<FileSteps::Trouble> FileSteps::next(const char* call) {
    if (current == nullptr) {
        return {};
    }
    current->calls_.emplace_back(call);
    if (!current->trouble_ || current->trouble_->step != current->calls_.size() - 1) {
        return {};
    }
    if (current->trouble_->then == Then::EndProcess) {
        ::_exit(0);
    }
    return current->trouble_;
}

namespace {
/** Calls the system's own function unless the call is to fail. */
template <class Function, class... Arguments>
int callUnlessItFails(const char* name, Arguments... arguments) {
    if (const auto trouble = FileSteps::next(name); trouble && trouble->then == FileSteps::Then::Fail) {
        errno = trouble->systemError;
        return -1;
    }
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name))(arguments...);
}
} // namespace

} // namespace support

// The program's own code calls these functions instead of the system library's.

extern "C" ssize_t write(int file, const void* bytes, size_t count) {
    static auto* const systemWrite =
        reinterpret_cast<ssize_t (*)(int, const void*, size_t)>(::dlsym(RTLD_NEXT, "write"));
    const auto trouble = support::FileSteps::next("write");
    if (trouble && trouble->then == support::FileSteps::Then::Fail) {
        errno = trouble->systemError;
        return -1;
    }
    return systemWrite(file, bytes, trouble ? std::min<size_t>(count, 1) : count);
}

extern "C" int fsync(int file) {
    return support::callUnlessItFails<int(int)>("fsync", file);
}

extern "C" int fchown(int file, uid_t owner, gid_t group) noexcept {
    return support::callUnlessItFails<int(int, uid_t, gid_t)>("fchown", file, owner, group);
}

extern "C" int fchmod(int file, mode_t mode) noexcept {
    return support::callUnlessItFails<int(int, mode_t)>("fchmod", file, mode);
}

extern "C" int syncfs(int file) noexcept {
    return support::callUnlessItFails<int(int)>("syncfs", file);
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
    return support::callUnlessItFails<int(int, const char*, int, const char*, unsigned)>(
        "renameat2", fromFolder, from, toFolder, to, flags);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    return support::callUnlessItFails<int(const char*, const char*)>("rename", from, to);
}
