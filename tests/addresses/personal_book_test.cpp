#include "addresses/card_folder.h"
#include "addresses/personal_book.h"
#include "tests/support/application.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/waiting.h"

#include <QCoreApplication>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using addresses::AddressSource;
using addresses::FoundAddress;
using addresses::FoundAddresses;
using support::eventsRunUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace files = std::filesystem;

std::string namedCard(const std::string& name, const std::string& address) {
    return "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:" + name + "\r\nEMAIL:" + address + "\r\nEND:VCARD\r\n";
}

class PersonalBook : public testing::Test {
  protected:
    PersonalBook() {
        support::application();
        files::create_directory(cards());
    }

    files::path cards() const { return folder.path("Contacts"); }

    void write(const std::string& name, const std::string& content) const {
        files::create_directories((cards() / name).parent_path());
        folder.write("Contacts/" + name, content);
    }

    std::unique_ptr<AddressSource> book(std::vector<std::string> senders = {}) const {
        return addresses::makePersonalBook({std::move(senders), folder.qtPath("Contacts")});
    }

    /** What a search comes to. */
    static FoundAddresses found(AddressSource& source, const std::string& typed) {
        std::optional<FoundAddresses> outcome;
        source.search(typed, [&outcome](FoundAddresses one) { outcome = std::move(one); });
        EXPECT_FALSE(outcome.has_value()) << "never from within the call";
        EXPECT_TRUE(eventsRunUntil([&outcome] { return outcome.has_value(); }));
        return outcome.value_or(FoundAddresses());
    }

    static std::vector<std::string> addressesOf(const FoundAddresses& outcome) {
        std::vector<std::string> all;
        for (const FoundAddress& one : outcome.found) {
            all.push_back(one.address);
        }
        return all;
    }

    support::TemporaryFolder folder;
};

} // namespace

TEST_F(PersonalBook, HasWhoWroteTheNewestFirstAndThenTheCardsByTheirNames) {
    write("b.vcf", namedCard("zed", "zed@x.org"));
    write("c.vcf", namedCard("Bob", "bob@x.org"));
    const auto source = book({"Cat <cat@x.org>", "ann@x.org (Ann)"});
    const FoundAddresses everybody = found(*source, "");
    EXPECT_EQ(everybody.found, (std::vector<FoundAddress>{{"Cat", "cat@x.org", "Mail"},
                                                          {"Ann", "ann@x.org", "Mail"},
                                                          {"Bob", "bob@x.org", "Address book"},
                                                          {"zed", "zed@x.org", "Address book"}}));
    EXPECT_FALSE(everybody.more);
    EXPECT_EQ(everybody.trouble, "");
}

TEST_F(PersonalBook, CountsAnAddressOnceWithItsNewestName) {
    write("a.vcf", namedCard("Card", "ann@x.org") + namedCard("Named", "bob@x.org"));
    const auto source = book({"New <Ann@X.org>", "Old <ann@x.org>", "bob@x.org"});
    EXPECT_EQ(found(*source, "").found,
              (std::vector<FoundAddress>{{"New", "Ann@X.org", "Mail"}, {"Named", "bob@x.org", "Mail"}}));
}

TEST_F(PersonalBook, FindsWhoHasEveryWordInNameOrAddress) {
    const auto source = book({"Ann Smith <ann@example.org>", "Zo\xC3\xAB Ann M\xC3\xBCller <zoe@x.org>",
                              "\"Smith, Bob\" <bob@example.org>"});

    struct Case {
        const char* typed;
        std::vector<std::string> found;
    };

    const std::vector<Case> cases{{"", {"ann@example.org", "zoe@x.org", "bob@example.org"}},
                                  {"   ", {"ann@example.org", "zoe@x.org", "bob@example.org"}},
                                  {"ann", {"ann@example.org", "zoe@x.org"}},
                                  {"SMITH ann", {"ann@example.org"}},
                                  {"ann  smi", {"ann@example.org"}},
                                  {"smith example", {"ann@example.org", "bob@example.org"}},
                                  {"M\xC3\x9CLLER", {"zoe@x.org"}},
                                  {"mu\xCC\x88ller", {"zoe@x.org"}},
                                  {"nnsm", {}},
                                  {"@x.org", {"zoe@x.org"}},
                                  {"nobody", {}}};
    for (const Case& one : cases) {
        EXPECT_EQ(addressesOf(found(*source, one.typed)), one.found) << one.typed;
    }
}

TEST_F(PersonalBook, ShowsFiftyAndTellsThatThereAreMore) {
    std::vector<std::string> senders;
    for (std::size_t count = 0; count <= addresses::mostFound; ++count) {
        senders.push_back("p" + std::to_string(count) + "@x.org");
    }
    const auto source = book(senders);
    const FoundAddresses all = found(*source, "");
    EXPECT_THAT(all.found, SizeIs(addresses::mostFound));
    EXPECT_TRUE(all.more);
    EXPECT_FALSE(found(*source, "p1").more);
    senders.pop_back();
    EXPECT_FALSE(found(*book(senders), "").more);
}

TEST_F(PersonalBook, OffersOnlyWhatCanBeSentToAndShown) {
    write("a.vcf", namedCard("No sign", "nobody") + namedCard("Too long", std::string(300, 'x') + "@x.org"));
    const auto source =
        book({"not an address", "Bell\a \xE2\x80\xAE" + std::string(100, 'x') + " <ann@x.org>", "",
              "\"J=?\" <j@x.org>", "=?utf-8?Q?" + std::string(100, 'x') + "?= <code@x.org>"});
    const FoundAddresses outcome = found(*source, "");
    ASSERT_THAT(addressesOf(outcome), ElementsAre("ann@x.org", "j@x.org", "code@x.org"));
    EXPECT_EQ(outcome.found[0].name, "Bell " + std::string(59, 'x'));
    EXPECT_EQ(outcome.found[1].name, "J=?");
    EXPECT_EQ(outcome.found[2].name, "") << "a part of an encoded word is no name";
    EXPECT_EQ(outcome.trouble, "");
}

TEST_F(PersonalBook, GivesUpASearchForTheNextOneAndForNone) {
    const auto source = book({"ann@x.org"});
    bool answered = false;
    source->search("ann", [&answered](const FoundAddresses&) { answered = true; });
    EXPECT_THAT(addressesOf(found(*source, "")), ElementsAre("ann@x.org"));
    EXPECT_FALSE(answered);
    source->search("ann", [&answered](const FoundAddresses&) { answered = true; });
    source->giveUp();
    QCoreApplication::processEvents();
    EXPECT_FALSE(answered);
}

TEST_F(PersonalBook, EndsWhileItsCardsAreRead) {
    std::string many;
    for (int count = 0; count < 10'000; ++count) {
        many += namedCard("x", "x@x.org");
    }
    for (int count = 0; count < 20; ++count) {
        write(std::to_string(count) + ".vcf", many);
    }
    auto source = book();
    source->search("", [](const FoundAddresses&) { FAIL() << "nobody waits for it"; });
    source.reset();
    QCoreApplication::processEvents();
}

TEST_F(PersonalBook, ReadsItsCardsOnceForEachOpening) {
    write("a.vcf", namedCard("Ann", "ann@x.org"));
    const auto source = book();
    EXPECT_THAT(addressesOf(found(*source, "")), ElementsAre("ann@x.org"));
    write("b.vcf", namedCard("Bob", "bob@x.org"));
    EXPECT_THAT(addressesOf(found(*source, "")), ElementsAre("ann@x.org"));
    EXPECT_THAT(addressesOf(found(*book(), "")), ElementsAre("ann@x.org", "bob@x.org"));
}

TEST_F(PersonalBook, TellsHowManyCardsCouldNotBeRead) {
    write("a.vcf", namedCard("Ann", "ann@x.org") + "BEGIN:VCARD\r\n");
    EXPECT_EQ(found(*book(), "").trouble, "1 card could not be read.");
    write("b.vcf", "nonsense");
    EXPECT_EQ(found(*book(), "").trouble, "2 cards could not be read.");
}

TEST_F(PersonalBook, WithoutCardsOrAFolderHasNoTrouble) {
    EXPECT_EQ(found(*book(), "").trouble, "");
    files::remove(cards());
    EXPECT_EQ(found(*book(), "").trouble, "");
    const auto source = addresses::makePersonalBook({{"ann@x.org"}, {}});
    EXPECT_THAT(addressesOf(found(*source, "")), ElementsAre("ann@x.org"));
}

TEST_F(PersonalBook, TellsThatAFolderCannotBeRead) {
    files::remove(cards());
    files::create_directory(folder.path("elsewhere"));
    folder.write("elsewhere/a.vcf", namedCard("Ann", "ann@x.org"));
    files::create_directory_symlink(folder.path("elsewhere"), cards());
    const FoundAddresses outcome = found(*book(), "");
    EXPECT_THAT(outcome.found, IsEmpty());
    EXPECT_EQ(outcome.trouble, "A folder of the address book could not be read.");
}

namespace {
class CardFolder : public PersonalBook {
  protected:
    addresses::CardFolder read(const addresses::CardFolderLimits& limits = {}) const {
        return addresses::readCardFolder(folder.qtPath("Contacts"), {}, limits);
    }

    static std::vector<std::string> namesIn(const addresses::CardFolder& read) {
        std::vector<std::string> names;
        for (const addresses::Card& one : read.cards) {
            names.push_back(one.name);
        }
        return names;
    }
};
} // namespace

TEST_F(CardFolder, HasTheFilesOfCardsAtAnyDepthWithEndingsOfEitherCase) {
    write("b.VCF", namedCard("b", "b@x.org"));
    write("a/c.Vcf", namedCard("ac", "ac@x.org"));
    write("a/b/c.vcf", namedCard("abc", "abc@x.org"));
    write("notes.txt", "x");
    write("vcf", "x");
    write(".hidden.vcf", "x");
    write(".trash/a.vcf", "x");
    const auto result = read();
    EXPECT_THAT(namesIn(result), ElementsAre("abc", "ac", "b"));
    EXPECT_EQ(result.unreadable, 0U);
    EXPECT_FALSE(result.hasClosedFolder);
    EXPECT_FALSE(result.tooLarge);
}

TEST_F(CardFolder, FollowsNoLinkAndWaitsForNoPipe) {
    folder.write("outside.vcf", namedCard("outside", "o@x.org"));
    files::create_directory(folder.path("outside"));
    folder.write("outside/a.vcf", namedCard("outside", "o@x.org"));
    files::create_symlink(folder.path("outside.vcf"), cards() / "link.vcf");
    files::create_directory_symlink(folder.path("outside"), cards() / "link");
    files::create_directory_symlink(cards(), cards() / "circle");
    ASSERT_EQ(::mkfifo((cards() / "pipe.vcf").c_str(), 0600), 0);
    files::create_directory(cards() / "folder.vcf");
    write("z.vcf", namedCard("z", "z@x.org"));
    const auto result = read();
    EXPECT_THAT(namesIn(result), ElementsAre("z"));
    EXPECT_EQ(result.unreadable, 0U);
    EXPECT_FALSE(result.hasClosedFolder);
}

TEST_F(CardFolder, PassesOverAFileThatIsTooLongAndCountsIt) {
    const std::string one = namedCard("a", "a@x.org");
    write("a.vcf", one);
    write("b.vcf", one + std::string(1U << 20U, '\n'));
    write("c.vcf", one + std::string((1U << 20U) - one.size(), '\n'));
    const auto result = read();
    EXPECT_THAT(result.cards, SizeIs(2));
    EXPECT_EQ(result.unreadable, 1U);
    EXPECT_FALSE(result.tooLarge);
}

TEST_F(CardFolder, EndsAtEachOfItsLimits) {
    const std::string one = namedCard("x", "x@x.org");
    for (const char* name : {"a.vcf", "b.vcf", "c.vcf", "d/e/f.vcf"}) {
        write(name, one);
    }
    EXPECT_FALSE(read().tooLarge);

    struct Case {
        addresses::CardFolderLimits limits;
        std::size_t cards;
    };

    const auto bytes = static_cast<std::int64_t>(one.size());
    for (const auto& [limits, count] :
         {Case{{.files = 2}, 2}, Case{{.allBytes = 3 * bytes - 1}, 2}, Case{{.depth = 2}, 3}}) {
        const auto result = read(limits);
        EXPECT_THAT(result.cards, SizeIs(count));
        EXPECT_TRUE(result.tooLarge);
    }
    EXPECT_TRUE(read({.entries = 3}).tooLarge);
    EXPECT_FALSE(read({.files = 4, .depth = 3}).tooLarge);
}

TEST_F(CardFolder, IsNotReadOnceItIsToStop) {
    write("a.vcf", namedCard("a", "a@x.org"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THAT(addresses::readCardFolder(folder.qtPath("Contacts"), stop.get_token()).cards, IsEmpty());
}
