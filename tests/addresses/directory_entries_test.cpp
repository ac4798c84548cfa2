#include "addresses/directory_entries.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using addresses::FoundAddress;
using addresses::FoundAddresses;
using addresses::foundIn;
using directory::Entry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

FoundAddress found(const std::string& name, const std::string& address) {
    return {name, address, "Directory Server"};
}

Entry entryOf(const std::string& displayName, const std::vector<std::string>& mail) {
    Entry entry;
    entry.displayName = displayName;
    entry.mail = mail;
    return entry;
}

TEST(DirectoryEntries, AreNamedByTheFirstOfTheirNamesThatShowsAnything) {
    const struct {
        Entry entry;
        std::string name;
    } cases[] = {
        {{"Miller Ann", "Ann Miller", "Ann", "Miller", {}}, "Ann Miller"},
        {{"Miller Ann", "", "Ann", "Miller", {}}, "Miller Ann"},
        {{"Miller Ann", " \t\x01", "Ann", "Miller", {}}, "Miller Ann"},
        {{"", "", "Ann", "Miller", {}}, "Ann Miller"},
        {{"", "", "", "Miller", {}}, "Miller"},
        {{"", "", "", "", {}}, ""},
        {{"\xe2\x80\xae"
          "evil\r\nname",
          "",
          "",
          "",
          {}},
         "evil name"},
        {{"J\xf6rg\0", "", "", "", {}}, "J\xc3\xb6rg"},
        {{std::string(1000, 'a'), "", "", "", {}}, std::string(64, 'a')},
    };

    for (const auto& one : cases) {
        Entry entry = one.entry;
        entry.mail = {"ann@example.org"};
        EXPECT_THAT(foundIn({entry}).found, ElementsAre(found(one.name, "ann@example.org")));
    }
}

TEST(DirectoryEntries, OfferOnlyAddressesThatCanBeSentTo) {
    const Entry entry = entryOf("Ann", {"", "ann", "ann@example.org\r\nBcc: x@y", "ann@example.org, b@c.org",
                                        "\xff\xd8\xff\xe0", "Ann <ann@example.org>", "ann@example.org"});
    EXPECT_THAT(foundIn({entry}).found, ElementsAre(found("Ann", "ann@example.org")));
    EXPECT_THAT(foundIn({entryOf("Bob", {}), entryOf("Cy", {"cy"})}).found, IsEmpty());
}

TEST(DirectoryEntries, WithManyAddressesOfferFive) {
    std::vector<std::string> many;
    for (int count = 0; count < 1000; ++count) {
        many.push_back("ann" + std::to_string(count) + "@example.org");
    }
    const FoundAddresses outcome = foundIn({entryOf("Ann", many), entryOf("Bob", {"bob@example.org"})});
    ASSERT_THAT(outcome.found, SizeIs(6));
    EXPECT_EQ(outcome.found[4], found("Ann", "ann4@example.org"));
    EXPECT_EQ(outcome.found[5], found("Bob", "bob@example.org"));
    EXPECT_FALSE(outcome.more);
}

TEST(DirectoryEntries, ThatSayTheSameTwiceAreFoundOnce) {
    const FoundAddresses outcome =
        foundIn({entryOf("Ann", {"ann@example.org", "ann@example.org"}), entryOf("Ann", {"ann@example.org"}),
                 entryOf("Office", {"ann@example.org"})});
    EXPECT_THAT(outcome.found,
                ElementsAre(found("Ann", "ann@example.org"), found("Office", "ann@example.org")));
}

TEST(DirectoryEntries, BeyondFiftyAddressesAreToldAsMore) {
    std::vector<Entry> entries;
    for (int count = 0; count < 50; ++count) {
        entries.push_back(entryOf("Ann", {"ann" + std::to_string(count) + "@example.org"}));
    }
    EXPECT_THAT(foundIn(entries).found, SizeIs(50));
    EXPECT_FALSE(foundIn(entries).more);
    entries.push_back(entryOf("Bob", {"bob"}));
    EXPECT_FALSE(foundIn(entries).more);
    entries.push_back(entryOf("Bob", {"bob@example.org"}));
    EXPECT_THAT(foundIn(entries).found, SizeIs(50));
    EXPECT_TRUE(foundIn(entries).more);
}

} // namespace
