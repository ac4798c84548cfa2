#include "addresses/personal_book.h"

#include "addresses/card_folder.h"
#include "addresses/sendable_address.h"
#include "addresses/sender.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <QObject>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stop_token>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

namespace addresses {

namespace {
/** As letters are compared: without regard to case, and to how an accent is written. */
QString folded(const QString& text) {
    return text.normalized(QString::NormalizationForm_KC).toCaseFolded();
}

QString folded(const std::string& text) {
    return folded(platform::fromBytes(text));
}

/** An encoded word of which the end is cut off could not be decoded any more, so it is no name. */
std::string nameOf(const std::string& name) {
    constexpr int blankAtTheCut = 1;
    std::string shown = nameForShowing(name);
    const bool isAsLongAsMayBe = platform::fromBytes(shown).size() >= mostNameLetters - blankAtTheCut;
    const bool isCode = shown.find("=?") != std::string::npos && !shown.ends_with("?=");
    return isAsLongAsMayBe && isCode ? std::string() : shown;
}

/** Everybody, each address once. */
class People {
  public:
    struct Person {
        FoundAddress found;
        QString searched;
    };

    void add(const std::string& name, const std::string& address, const char* source) {
        if (!canBeSentTo(address)) {
            return;
        }
        const auto [place, isNew] = places_.try_emplace(platform::upperCase(address), people_.size());
        if (isNew) {
            people_.push_back({{nameOf(name), address, source}, {}});
        } else if (FoundAddress& known = people_[place->second].found; known.name.empty()) {
            known.name = nameOf(name);
        }
    }

    /** The last call. */
    std::vector<Person> take() {
        for (Person& person : people_) {
            person.searched = folded(person.found.name + '\n' + person.found.address);
        }
        return std::move(people_);
    }

  private:
    std::vector<Person> people_;
    /** Where each address, in upper case, is in the list. */
    std::unordered_map<std::string, std::size_t> places_;
};

struct Book {
    std::vector<People::Person> people;
    std::string trouble;
};

std::string troubleOf(const CardFolder& folder) {
    std::string trouble;
    const auto tell = [&trouble](const std::string& sentence) {
        trouble += (trouble.empty() ? "" : " ") + sentence;
    };
    if (folder.unreadable == 1) {
        tell("1 card could not be read.");
    } else if (folder.unreadable > 1) {
        tell(std::to_string(folder.unreadable) + " cards could not be read.");
    }
    if (folder.hasClosedFolder) {
        tell("A folder of the address book could not be read.");
    }
    if (folder.tooLarge) {
        tell("The address book is too large: only a part of it is searched.");
    }
    return trouble;
}

Book readBook(const PersonalSources& sources, const std::stop_token& stop) {
    People people;
    for (const std::string& from : sources.senders) {
        if (const std::optional<Sender> sender = senderOf(from)) {
            people.add(sender->name, sender->address, "Mail");
        }
        if (stop.stop_requested()) {
            return {};
        }
    }
    CardFolder folder;
    if (!sources.cardFolder.isEmpty()) {
        folder = readCardFolder(sources.cardFolder, stop);
    }
    std::vector<std::pair<QString, const Card*>> byName;
    for (const Card& card : folder.cards) {
        byName.emplace_back(folded(card.name), &card);
    }
    std::ranges::stable_sort(byName, {}, &std::pair<QString, const Card*>::first);
    for (const auto& [name, card] : byName) {
        for (const std::string& address : card->addresses) {
            people.add(card->name, address, "Address book");
        }
    }
    return {people.take(), troubleOf(folder)};
}

class PersonalBook : public AddressSource {
  public:
    explicit PersonalBook(PersonalSources sources) {
        const auto work = [this, sources = std::move(sources)](const std::stop_token& stop) {
            auto book = std::make_shared<Book>();
            const int error = platform::errorNumberOf([&] { *book = readBook(sources, stop); });
            if (error != 0) {
                *book = unreadBook();
            }
            QMetaObject::invokeMethod(
                &receiver_, [this, book] { open(std::move(*book)); }, Qt::QueuedConnection);
        };
        try {
            reader_ = std::jthread(work);
        } catch (const std::system_error&) {
            book_ = unreadBook();
        }
    }

    void search(std::string typed, std::function<void(FoundAddresses)> found) override {
        const std::size_t number = ++searches_;
        asked_.emplace(Asked{std::move(typed), std::move(found)});
        QMetaObject::invokeMethod(
            &receiver_,
            [this, number] {
                if (number == searches_) {
                    answer();
                }
            },
            Qt::QueuedConnection);
    }

    void giveUp() override { asked_.reset(); }

  private:
    struct Asked {
        std::string typed;
        std::function<void(FoundAddresses)> found;
    };

    static Book unreadBook() { return {{}, "The address book could not be read."}; }

    void open(Book book) {
        book_ = std::move(book);
        answer();
    }

    /** Tells what was found, once the book has been read. */
    void answer() {
        if (!asked_ || !book_) {
            return;
        }
        const Asked asked = *std::exchange(asked_, std::nullopt);
        asked.found(look(asked.typed));
    }

    FoundAddresses look(const std::string& typed) const {
        const QStringList words = folded(typed).simplified().split(u' ', Qt::SkipEmptyParts);
        FoundAddresses outcome{{}, false, book_->trouble};
        for (const People::Person& person : book_->people) {
            const bool hasAll = std::ranges::all_of(
                words, [&person](const QString& word) { return person.searched.contains(word); });
            if (!hasAll) {
                continue;
            }
            if (outcome.found.size() == mostFound) {
                outcome.more = true;
                break;
            }
            outcome.found.push_back(person.found);
        }
        return outcome;
    }

    QObject receiver_;
    std::optional<Book> book_;
    std::optional<Asked> asked_;
    std::size_t searches_ = 0;
    /** Ends before everything that it uses. */
    std::jthread reader_;
};
} // namespace

std::unique_ptr<AddressSource> makePersonalBook(PersonalSources sources) {
    return std::make_unique<PersonalBook>(std::move(sources));
}

} // namespace addresses
