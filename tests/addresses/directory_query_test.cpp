#include "addresses/directory_query.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using addresses::directoryFilter;
using addresses::userBelow;
using namespace std::string_view_literals;

/** The filter for words that have been escaped already. */
template <class... Words>
std::string filterFor(const Words&... words) {
    std::string filter = "(&(mail=*)";
    for (const std::string& word : {std::string(words)...}) {
        filter += "(|(cn=*" + word + "*)(sn=*" + word + "*)(givenName=*" + word + "*)(displayName=*" + word +
                  "*)(mail=*" + word + "*)(uid=*" + word + "*))";
    }
    return filter + ")";
}

TEST(DirectoryFilter, AsksForEachWordAsItIs) {
    const struct {
        std::string_view typed;
        std::string filter;
    } cases[] = {
        {"ann", filterFor("ann")},
        {" ann  miller\t", filterFor("ann", "miller")},
        {"*", filterFor("\\2a")},
        {"*)(uid=*", filterFor("\\2a\\29\\28uid=\\2a")},
        {"a\\2a", filterFor("a\\5c2a")},
        {"ann)(|", filterFor("ann\\29\\28|")},
        {"a\0b"sv, filterFor("a\\00b")},
        {"\x1b\x7f", filterFor("\\1b\\7f")},
        {"&!<>=~", filterFor("&!<>=~")},
        {"J\xc3\xb6rg", filterFor("J\xc3\xb6rg")},
        {"\xd9\x85\xd8\xb1\xd9\x8a\xd9\x85 \xe2\x80\xae",
         filterFor("\xd9\x85\xd8\xb1\xd9\x8a\xd9\x85", "\xe2\x80\xae")},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(directoryFilter(one.typed), one.filter) << one.typed;
    }
}

TEST(DirectoryFilter, IsEmptyWhereNoWordWasTyped) {
    EXPECT_EQ(directoryFilter(""), "");
    EXPECT_EQ(directoryFilter(" \t\r\n "), "");
}

TEST(DirectoryFilter, OfALongTextHasItsStart) {
    EXPECT_EQ(directoryFilter(std::string(10'000, 'a')), filterFor(std::string(256, 'a')));
    // No letter is asked for in part: 85 of three bytes are 255.
    std::string euros;
    std::string begin;
    for (int count = 0; count < 1000; ++count) {
        euros += "\xe2\x82\xac";
        begin += count < 85 ? "\xe2\x82\xac" : "";
    }
    EXPECT_EQ(directoryFilter(euros), filterFor(begin));
}

TEST(DirectoryFilter, OfManyWordsHasTheFirstEight) {
    EXPECT_EQ(directoryFilter("a b c d e f g h i j"), filterFor("a", "b", "c", "d", "e", "f", "g", "h"));
}

TEST(UserBelow, IsOneNameWhateverItsLetters) {
    const struct {
        std::string_view user;
        std::string_view name;
    } cases[] = {
        {"ann", "uid=ann,dc=example,dc=org"},
        {"ann,dc=evil", "uid=ann\\,dc\\=evil,dc=example,dc=org"},
        {"a+cn=b", "uid=a\\+cn\\=b,dc=example,dc=org"},
        {"\"a\";<b>\\", "uid=\\\"a\\\"\\;\\<b\\>\\\\,dc=example,dc=org"},
        {"#a#", "uid=\\#a#,dc=example,dc=org"},
        {" a b ", "uid=\\ a b\\ ,dc=example,dc=org"},
        {"a\0\n"sv, "uid=a\\00\\0a,dc=example,dc=org"},
        {"J\xc3\xb6rg", "uid=J\xc3\xb6rg,dc=example,dc=org"},
    };

    for (const auto& one : cases) {
        EXPECT_EQ(userBelow("dc=example,dc=org", one.user), one.name);
    }
    EXPECT_EQ(userBelow("", "ann"), "uid=ann");
}

} // namespace
