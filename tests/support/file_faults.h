#pragma once

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <sched.h>
#include <string_view>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace support {

/** Lets no file of this process grow beyond the size, for as long as it lives. */
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &old_);
        rlimit limit = old_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &old_);
        static_cast<void>(std::signal(SIGXFSZ, oldHandler_));
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit old_{};
    void (*oldHandler_)(int);
};

/**
 * Calls the action on a thread that sees a disk of 64 KiB in the folder's place; the disk goes with the
 * thread. False when that needs more rights than the test has.
 */
template <class Action>
bool onSmallDisk(const std::filesystem::path& folder, const Action& action) {
    bool mounted = false;
    std::thread([&] {
        mounted = ::unshare(CLONE_NEWNS) == 0 &&
                  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (mounted) {
            action();
        }
    }).join();
    return mounted;
}

/**
 * Calls the action on a thread without the administrator's privileges, so that permission bits count for it.
 * False when these cannot be given up.
 */
template <class Action>
bool withoutPrivileges(const Action& action) {
    bool given = false;
    std::thread([&] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        const __user_cap_data_struct none[2] = {};
        given = ::syscall(SYS_capset, &header, none) == 0;
        if (given) {
            action();
        }
    }).join();
    return given;
}

/**
 * Calls the action on a thread that is the user of this number to the system. False when that needs more
 * rights than the test has.
 */
template <class Action>
bool asUser(uid_t user, const Action& action) {
    bool taken = false;
    std::thread([&] {
        // The library's own function would change the whole process.
        constexpr auto asBefore = static_cast<uid_t>(-1);
        taken = ::syscall(SYS_setresuid, asBefore, user, asBefore) == 0;
        if (taken) {
            action();
        }
    }).join();
    return taken;
}

inline mode_t modeOf(const std::filesystem::path& path) {
    struct stat status {};

    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & static_cast<mode_t>(ALLPERMS) : 0;
}

/** Adds to the file's end. */
inline void grow(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes << std::flush;
}

} // namespace support
