#include "email/header_events.h"
#include "email/messages.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

namespace {

using email::MessageTable;
using platform::errorNumberOf;

TEST(Messages, AreNumberedFrom1To200) {
    MessageTable table;
    for (int number = 1; number <= 200; ++number) {
        table.at(number).Size = number;
    }
    for (int number = 1; number <= 200; ++number) {
        EXPECT_EQ(table.at(number).Size, number);
    }
}

TEST(Messages, ANumberOutsideTheTableIsErrorNine) {
    MessageTable table;
    for (const int number : {-32768, -1, 0, 201, 32767}) {
        EXPECT_EQ(errorNumberOf([&] { table.at(number); }), platform::errors::SubscriptOutOfRange) << number;
    }
}

TEST(Messages, AMessageReadyForListingShowsAnApostropheForSubjectAndDate) {
    email::MessageSummary summary{"from", "subject", "date",     "header", 7,
                                  "body", "type",    "boundary", "name",   {}};
    email::resetForListing(summary);
    EXPECT_EQ(summary.Subject, "'");
    EXPECT_EQ(summary.Date, "'");
    EXPECT_EQ(summary.From, "");
    EXPECT_EQ(summary.HeaderText, "");
    EXPECT_EQ(summary.ContentType, "");
    EXPECT_EQ(summary.Boundary, "");
}

TEST(Messages, ListingAgainKeepsBodySizeAndAttachmentName) {
    email::MessageSummary summary{"from", "subject", "date",     "header", 7,
                                  "body", "type",    "boundary", "name",   {}};
    email::resetForListing(summary);
    EXPECT_EQ(summary.BodyText, "body");
    EXPECT_EQ(summary.Size, 7);
    EXPECT_EQ(summary.AttachmentName, "name");
}

} // namespace
