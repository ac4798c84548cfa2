#include "addresses/directory_source.h"

#include "addresses/directory_entries.h"
#include "addresses/directory_query.h"
#include "addresses/directory_session.h"
#include "addresses/directory_troubles.h"
#include "platform/text.h"

#include <QCoreApplication>

#include <optional>
#include <utility>

namespace addresses {

namespace {
class DirectorySource final : public AddressSource {
  public:
    explicit DirectorySource(DirectorySettings settings) : settings_(std::move(settings)) {}

    void search(std::string typed, std::function<void(FoundAddresses)> found) override {
        giveUp();
        found_ = std::move(found);
        filter_ = directoryFilter(typed);
        const auto server =
            transport::parseServerName(platform::fromBytes(settings_.server), kDirectoryPorts);
        if (filter_.empty() || !server) {
            tellLater({{}, false, filter_.empty() ? std::string() : troubleOfName()});
            return;
        }
        hasLoggedOn_ = false;
        session_.emplace(*server, settings_.patience);
        session_->open([this](const DirectoryAnswer& answer) {
            if (answer.end.kind != DirectoryEnd::Kind::Answered) {
                tell({{}, false, troubleOf(answer.end)});
            } else if (demandsLogOn_ && mayLogOn()) {
                logOn();
            } else {
                ask();
            }
        });
    }

    void giveUp() override {
        session_.reset();
        known_.reset();
        found_ = nullptr;
    }

  private:
    bool mayLogOn() const {
        return session_->protection().serverProven && !hasLoggedOn_ && !settings_.user.empty() &&
               !settings_.password.empty();
    }

    void ask() {
        // One more than is shown tells whether there are more.
        constexpr std::size_t asked = mostFound + 1;
        const auto seconds = std::chrono::ceil<std::chrono::seconds>(settings_.patience);
        session_->search(
            {settings_.base, false, filter_, static_cast<int>(asked), static_cast<int>(seconds.count())},
            asked, [this](const DirectoryAnswer& answer) { hear(answer); });
    }

    void hear(const DirectoryAnswer& answer) {
        if (answer.end.kind == DirectoryEnd::Kind::Answered && demandsLogOn(answer.end.code) && mayLogOn()) {
            logOn();
            return;
        }
        FoundAddresses outcome = foundIn(answer.entries);
        if (answer.end.kind == DirectoryEnd::Kind::Answered && isLimit(answer.end.code) &&
            !answer.entries.empty()) {
            outcome.more = true;
        } else {
            outcome.trouble = troubleOf(answer.end);
        }
        tell(std::move(outcome));
    }

    void logOn() {
        demandsLogOn_ = true;
        if (!refusal_.empty()) {
            tell({{}, false, refusal_});
            return;
        }
        hasLoggedOn_ = true;
        session_->logOn(userBelow(settings_.base, settings_.user), settings_.password,
                        [this](const DirectoryAnswer& answer) {
                            if (answer.end.kind == DirectoryEnd::Kind::Answered && answer.end.code == 0) {
                                ask();
                                return;
                            }
                            const std::string trouble = troubleOfLogOn(answer.end);
                            // A connection that broke says nothing about the password.
                            refusal_ = answer.end.kind == DirectoryEnd::Kind::Answered ? trouble : refusal_;
                            tell({{}, false, trouble});
                        });
    }

    /** Tells what is known without a search. */
    void tellLater(FoundAddresses outcome) {
        known_ = std::make_shared<FoundAddresses>(std::move(outcome));
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [this, weak = std::weak_ptr<FoundAddresses>(known_)] {
                // Nobody has given the search up, so this source is there.
                if (const auto known = weak.lock()) {
                    tell(*known);
                }
            },
            Qt::QueuedConnection);
    }

    /** Ends the search. Whoever is told may destroy this source. */
    void tell(FoundAddresses outcome) {
        const auto found = std::exchange(found_, nullptr);
        giveUp();
        found(std::move(outcome));
    }

    DirectorySettings settings_;
    std::function<void(FoundAddresses)> found_;
    std::string filter_;
    std::optional<DirectorySession> session_;
    bool hasLoggedOn_ = false;
    /** The directory has demanded a log-on, which is then done before each search. */
    bool demandsLogOn_ = false;
    /** What was told of a log-on that was refused. */
    std::string refusal_;
    std::shared_ptr<FoundAddresses> known_;
};
} // namespace

std::unique_ptr<AddressSource> makeDirectorySource(DirectorySettings settings) {
    return std::make_unique<DirectorySource>(std::move(settings));
}

} // namespace addresses
