#include "selftest/private_folder.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <unistd.h>

namespace selftest {

namespace filesystem = std::filesystem;

namespace {
/** The value of a variable of the environment; empty when it is not set. */
std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

void set(const std::string& name, const std::string& value) {
    if (::setenv(name.c_str(), value.c_str(), 1) != 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
}

void setUnlessSet(const std::string& name, const std::string& value) {
    if (variable(name.c_str()).empty()) {
        set(name, value);
    }
}

void makePrivate(const filesystem::path& folder) {
    filesystem::create_directory(folder);
    filesystem::permissions(folder, filesystem::perms::owner_all);
}

/** These are found by way of the folders that are about to be replaced. */
void keepSoundAndDisplayWithinReach() {
    const std::string runtime = variable("XDG_RUNTIME_DIR");
    // Where no server is named, the sound library would start one, which would stay.
    setUnlessSet("PULSE_SERVER", "unix:" + (runtime.empty() ? "/nonexistent" : runtime) + "/pulse/native");
    setUnlessSet("XAUTHORITY", variable("HOME") + "/.Xauthority");
    const std::string wayland = variable("WAYLAND_DISPLAY");
    if (!runtime.empty()) {
        setUnlessSet("PIPEWIRE_RUNTIME_DIR", runtime);
    }
    if (!runtime.empty() && !wayland.empty() && wayland.front() != '/') {
        set("WAYLAND_DISPLAY", runtime + '/' + wayland);
    }
}
} // namespace

PrivateFolder::PrivateFolder() {
    std::string name = variable("TMPDIR");
    name = (name.empty() ? "/tmp" : name) + "/brindlewake-self-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    path_ = filesystem::canonical(name);
}

PrivateFolder::~PrivateFolder() {
    // What could not be removed has been told by then.
    static_cast<void>(remove());
}

std::string PrivateFolder::remove() {
    std::error_code error;
    filesystem::remove_all(path_, error);
    return error ? path_.string() + ": " + error.message() : std::string();
}

Places::Places(const filesystem::path& folder)
    : home(folder / "home"),
      runtime(folder / "run"),
      work(folder / "work"),
      drive(folder / "drive"),
      saved(drive / "SAVED"),
      root(folder / "root.pem"),
      printed(folder / "printed.pdf") {}

void moveInto(const Places& places) {
    for (const filesystem::path& folder :
         {places.home.parent_path(), places.home, places.runtime, places.work, places.drive, places.saved}) {
        makePrivate(folder);
    }
    keepSoundAndDisplayWithinReach();
    set("HOME", places.home);
    set("TMPDIR", places.home);
    set("XDG_RUNTIME_DIR", places.runtime);
    for (const char* const name : {"XDG_STATE_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"}) {
        ::unsetenv(name);
    }
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        ::unsetenv((std::string("BRINDLEWAKE_DRIVE_") + letter).c_str());
    }
    set("BRINDLEWAKE_DRIVE_C", places.drive);
    filesystem::current_path(places.work);
}

} // namespace selftest
