#pragma once

#include "tests/support/places.h"

#include <QString>
#include <QTemporaryDir>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

/** A folder of its own under the build tree, with all that is in it gone at the end of the test. */
class TemporaryFolder {
  public:
    TemporaryFolder() : TemporaryFolder(buildFolder()) {}

    /** The same inside another folder. */
    explicit TemporaryFolder(const std::filesystem::path& parent)
        : folder_(QString::fromStdString((parent / "t-XXXXXX").string())) {
        if (!folder_.isValid()) {
            throw std::runtime_error("no temporary folder: " + folder_.errorString().toStdString());
        }
    }

    /** The folder itself. */
    std::filesystem::path path() const { return folder_.path().toStdString(); }

    std::filesystem::path path(std::string_view name) const { return path() / name; }

    /** The same as Qt wants it. */
    QString qtPath(std::string_view name) const { return QString::fromStdString(path(name).string()); }

    /** Writes the bytes as they are and returns the file's path. */
    std::filesystem::path write(std::string_view name, std::string_view bytes) const {
        std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) {
            throw std::runtime_error("cannot write " + path(name).string());
        }
        return path(name);
    }

    /** All bytes of the file. */
    std::string read(std::string_view name) const {
        std::ifstream file(path(name), std::ios::binary);
        if (!file) {
            throw std::runtime_error("cannot read " + path(name).string());
        }
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /** The content of those of the files that there are, one behind the other. */
    std::string readWhatIsThere(std::initializer_list<std::string_view> names) const {
        std::string text;
        for (const std::string_view name : names) {
            text += std::filesystem::exists(path(name)) ? read(name) : std::string();
        }
        return text;
    }

    /** How many entries the folder has. */
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path()), {}));
    }

  private:
    QTemporaryDir folder_;
};

} // namespace support
