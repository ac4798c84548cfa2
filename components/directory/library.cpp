// The way to the library that knows the protocol, which is loaded at the first search.

#include "components/directory/conversation.h"
#include "platform/file_descriptor.h"
#include "platform/own_library.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <atomic>
#include <memory>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace directory {

namespace {
using Make = Conversation* (*)();

/** The loading, which its thread and all who wait for it share. */
struct Loading {
    /** Readable from the end of the loading on. */
    platform::FileDescriptor ended{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    /** nullptr until then, and where the library cannot be loaded. */
    std::atomic<Make> make = nullptr;
};

void load(const std::shared_ptr<Loading>& loading) {
    const Make make =
        platform::functionIn<Make>("libbrindlewake_directory.so", "brindlewakeMakeConversation");
    if (make != nullptr) {
        // With the first one the library makes itself ready, for which it may wait for the name service.
        const std::unique_ptr<Conversation> first(make());
        loading->make = make;
    }
    // The counter begins at 0, so this never fails.
    static_cast<void>(eventfd_write(loading->ended.number(), 1));
}

std::shared_ptr<Loading> startedLoading() {
    // Otherwise the library takes settings from the system's files, the user's, those of the current folder
    // and the environment. It asks for this variable before it looks at any.
    qputenv("LDAPNOINIT", "1");
    auto loading = std::make_shared<Loading>();
    try {
        // Nobody joins this thread: the end of the program does not wait for a name service.
        std::thread([loading] { load(loading); }).detach();
    } catch (const std::system_error&) {
        // Without a thread everybody waits.
        load(loading);
    }
    return loading;
}

const Loading& theLoading() {
    static const std::shared_ptr<Loading> loading = startedLoading();
    return *loading;
}

/** Tells of the end of the loading, and then deletes itself. */
class Waiter : public QObject {
  public:
    Waiter(platform::FileDescriptor ended, const std::function<void()>& loaded)
        : QObject(QCoreApplication::instance()),
          ended_(std::move(ended)),
          notifier_(ended_.number(), QSocketNotifier::Read) {
        connect(&notifier_, &QSocketNotifier::activated, this, [this, loaded] {
            notifier_.setEnabled(false);
            deleteLater();
            loaded();
        });
    }

  private:
    platform::FileDescriptor ended_;
    QSocketNotifier notifier_;
};
} // namespace

void loadConversations(const std::function<void()>& loaded) {
    // Each waiter needs a number of its own, since Qt watches none twice.
    platform::FileDescriptor ended(dup(theLoading().ended.number()));
    if (ended.isOpen()) {
        new Waiter(std::move(ended), loaded);
        return;
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(), loaded, Qt::QueuedConnection);
}

std::unique_ptr<Conversation> makeConversation() {
    const Make make = theLoading().make;
    return std::unique_ptr<Conversation>(make == nullptr ? nullptr : make());
}

} // namespace directory
