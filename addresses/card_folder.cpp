#include "addresses/card_folder.h"

#include "platform/private_file.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace addresses {

namespace {
using platform::FileDescriptor;

/** No wait for a pipe, no terminal, no link. */
constexpr int kOpening = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

FileDescriptor openIn(const FileDescriptor& folder, const std::string& name, int alsoWith = 0) {
    return FileDescriptor(::openat(folder.number(), name.c_str(), kOpening | alsoWith));
}

bool hasEndingOfCards(const std::string& name) {
    return platform::upperCase(name).ends_with(".VCF");
}

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

class CardFolderReader {
  public:
    CardFolderReader(const std::stop_token& stop, const CardFolderLimits& limits)
        : stop_(stop), limits_(limits) {}

    CardFolder read(const QString& nativePath) {
        const FileDescriptor folder(
            ::open(QFile::encodeName(nativePath).constData(), kOpening | O_DIRECTORY));
        if (folder.isOpen()) {
            readFolder(folder, 1);
        } else {
            result_.hasClosedFolder = errno != ENOENT;
        }
        return std::move(result_);
    }

  private:
    /** Whether to go on. */
    bool goesOn() const { return !result_.tooLarge && !stop_.stop_requested(); }

    void readFolder(const FileDescriptor& folder, int depth) {
        if (depth > limits_.depth) {
            result_.tooLarge = true;
            return;
        }
        for (const std::string& name : namesIn(folder)) {
            struct stat status = {};
            if (!goesOn() || ::fstatat(folder.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
                continue;
            }
            if (S_ISDIR(status.st_mode)) {
                const FileDescriptor inner = openIn(folder, name, O_DIRECTORY);
                if (inner.isOpen()) {
                    readFolder(inner, depth + 1);
                } else {
                    result_.hasClosedFolder = true;
                }
            } else if (S_ISREG(status.st_mode) && hasEndingOfCards(name)) {
                readFile(folder, name);
            }
        }
    }

    /** The names of what is not hidden, in their order. */
    std::vector<std::string> namesIn(const FileDescriptor& folder) {
        std::vector<std::string> names;
        // Closing the list of entries closes the descriptor that it was made from.
        const int copy = ::fcntl(folder.number(), F_DUPFD_CLOEXEC, 0);
        const std::unique_ptr<DIR, CloseFolder> entries(copy < 0 ? nullptr : ::fdopendir(copy));
        if (!entries) {
            result_.hasClosedFolder = true;
            return names;
        }
        // NOLINTNEXTLINE(concurrency-mt-unsafe): safe as long as each thread has a list of its own
        while (const dirent* const entry = ::readdir(entries.get())) {
            const std::string name = static_cast<const char*>(entry->d_name);
            if (name.starts_with('.')) {
                continue;
            }
            if (++entries_ > limits_.entries) {
                result_.tooLarge = true;
                break;
            }
            names.push_back(name);
        }
        std::ranges::sort(names);
        return names;
    }

    void readFile(const FileDescriptor& folder, const std::string& name) {
        if (++files_ > limits_.files) {
            result_.tooLarge = true;
            return;
        }
        CardsRead read;
        const int error = platform::errorNumberOf([&] { read = readCards(contentOf(folder, name)); });
        if (error == platform::errors::OutOfMemory) {
            throw platform::RuntimeError(error);
        }
        result_.unreadable += error == 0 ? read.unreadable : 1;
        std::ranges::move(read.cards, std::back_inserter(result_.cards));
    }

    /** \throws RuntimeError 75 for a file that may not be read or is too long, 57 when the disk fails. */
    std::string contentOf(const FileDescriptor& folder, const std::string& name) {
        auto file = std::make_shared<const FileDescriptor>(openIn(folder, name));
        if (!file->isOpen()) {
            throw platform::RuntimeError(platform::errors::PathFileAccess);
        }
        platform::RegularInput input(std::move(file));
        if (input.size() > limits_.fileBytes) {
            throw platform::RuntimeError(platform::errors::PathFileAccess);
        }
        bytes_ += input.size();
        result_.tooLarge = bytes_ > limits_.allBytes;
        std::string content(result_.tooLarge ? 0 : static_cast<std::size_t>(input.size()), '\0');
        for (std::size_t used = 0; used < content.size();) {
            used += input.read(std::span(content).subspan(used)).size();
        }
        return content;
    }

    const std::stop_token& stop_;
    CardFolderLimits limits_;
    CardFolder result_;
    std::size_t entries_ = 0;
    std::size_t files_ = 0;
    std::int64_t bytes_ = 0;
};
} // namespace

CardFolder readCardFolder(const QString& nativePath, const std::stop_token& stop,
                          const CardFolderLimits& limits) {
    return CardFolderReader(stop, limits).read(nativePath);
}

} // namespace addresses
