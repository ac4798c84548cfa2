#include "message/listed_header.h"

#include <gtest/gtest.h>

#include <string>

namespace {
TEST(ListedHeader, TakesTheFirstFieldOfEachNameInAnyCase) {
    ListedHeader header;
    header.add("SUBJECT", "one");
    header.add("Subject", "two");
    header.add("from", "a@b");
    header.add("Date ", "today");
    EXPECT_EQ(header.fields().subject, "one");
    EXPECT_EQ(header.fields().from, "a@b");
    EXPECT_EQ(header.fields().date, "today");
}

TEST(ListedHeader, AddsContinuationLinesToTheFieldThatTheyContinue) {
    ListedHeader header;
    header.add("Subject", "one");
    header.add("", " two");
    header.add("Received", "x");
    header.add("", " y");
    header.add("Subject", "other");
    header.add("", " z");
    EXPECT_EQ(header.fields().subject, "one two");
    EXPECT_EQ(header.fields().from, "");
}

TEST(ListedHeader, PassesOverLinesThatAreNoFields) {
    ListedHeader header;
    header.add("", " before any field");
    header.add("odd line", "");
    header.add("Subject", "one");
    EXPECT_EQ(header.fields().subject, "one");
}

TEST(ListedHeader, KeepsNoMoreThanARowShows) {
    ListedHeader header;
    header.add("Subject", std::string(1'500, 'a'));
    header.add("", std::string(1'500, 'b'));
    header.add("", std::string(1'500, 'c'));
    EXPECT_EQ(header.fields().subject, std::string(1'500, 'a') + std::string(500, 'b'));
}

TEST(ListedHeader, CutsNoCharacterInTwo) {
    ListedHeader header;
    header.add("Subject", "a" + std::string(1'998, 'b') + "\u00e4\u00e4");
    EXPECT_EQ(header.fields().subject, "a" + std::string(1'998, 'b'));
}

TEST(ListedHeader, BeginsAnewForEachMessage) {
    ListedHeader header;
    header.add("Subject", "one");
    header.begin();
    header.add("", " two");
    EXPECT_EQ(header.fields().subject, "");
    header.add("Subject", "three");
    EXPECT_EQ(header.fields().subject, "three");
}
} // namespace
