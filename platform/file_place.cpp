#include "platform/file_place.h"

#include <QFile>

#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace platform {

namespace {
/** Where a path leads, at the end of all links. */
struct Place {
    struct stat folder {};

    /** The file's name within the folder. */
    std::string name;
    /** Nothing when there is no such file. */
    std::optional<struct stat> file;
};

/** Where the path leads; nothing when the folder cannot be looked at, or the links lead round in a circle. */
std::optional<Place> placeOf(const QString& nativePath) {
    constexpr int mostLinks = 40; // as many as the system follows itself
    std::filesystem::path path = QFile::encodeName(nativePath).toStdString();
    for (int links = 0; links <= mostLinks; ++links) {
        Place place;
        const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
        if (::stat(folder.c_str(), &place.folder) != 0) {
            return std::nullopt;
        }
        place.name = path.filename().string();

        struct stat status {};

        if (::lstat(path.c_str(), &status) != 0) {
            return place;
        }
        if (!S_ISLNK(status.st_mode)) {
            place.file = status;
            return place;
        }
        std::error_code problem;
        path = folder / std::filesystem::read_symlink(path, problem);
        if (problem) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool isSame(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool isSameIgnoringCase(const std::string& one, const std::string& other) {
    return QFile::decodeName(one.c_str()).compare(QFile::decodeName(other.c_str()), Qt::CaseInsensitive) == 0;
}
} // namespace

bool isSamePlace(const QString& nativePath, const QString& otherNativePath) {
    const std::optional<Place> one = placeOf(nativePath);
    const std::optional<Place> other = placeOf(otherNativePath);
    if (!one || !other) {
        return false;
    }
    if (one->file && other->file) {
        return isSame(*one->file, *other->file);
    }
    return !one->file && !other->file && isSame(one->folder, other->folder) &&
           isSameIgnoringCase(one->name, other->name);
}

} // namespace platform
