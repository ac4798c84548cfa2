#pragma once

#include <filesystem>
#include <string>

namespace selftest {

/** A folder among the temporary ones that only this user may enter; gone, with all in it, when this goes. */
class PrivateFolder {
  public:
    /** \throws std::system_error, which names the folder, when it cannot be made. */
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

    /** Removes it now. Returns why it could not be; empty when it is gone. */
    std::string remove();

  private:
    std::filesystem::path path_;
};

/** Folders of one run in it, of which the program knows no other. */
struct Places {
    explicit Places(const std::filesystem::path& folder);

    std::filesystem::path home;
    std::filesystem::path runtime;
    /** Where the program is started, with its settings. */
    std::filesystem::path work;
    /** What C: stands for. */
    std::filesystem::path drive;
    /** Where attachments are saved, C:\SAVED. */
    std::filesystem::path saved;
    /** The root that certificates of the servers are signed with. */
    std::filesystem::path root;
    std::filesystem::path printed;
};

/**
 * Makes the folders, and lets this process know no others: home, state, runtime and temporary folder, drives,
 * current folder. Sound and display of the user stay within reach. \throws std::system_error
 */
void moveInto(const Places& places);

} // namespace selftest
