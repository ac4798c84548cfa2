#include "standard/date_text.h"
#include "tests/standard/local_zone.h"

#include <gtest/gtest.h>

#include <string>

namespace {
struct DateCase {
    const char* name;
    const char* field;
    const char* text;
};

class DateText : public testing::TestWithParam<DateCase> {};

TEST_P(DateText, IsLocalTimeOrTheFieldAsItStands) {
    const support::LocalZone berlin("Europe/Berlin");
    EXPECT_EQ(standard::dateText(GetParam().field), GetParam().text);
}

const DateCase kDateCases[] = {
    {"InWinter", "Sat, 21 Nov 2026 17:42:00 +0100", "2026-11-21 17:42"},
    {"InSummer", "Tue, 21 Jul 2026 17:42:00 +0200", "2026-07-21 17:42"},
    {"OfAnotherZone", "Sat, 21 Nov 2026 23:42:10 -0500", "2026-11-22 05:42"},
    {"WithoutWeekday", "21 Nov 2026 17:42:00 +0100", "2026-11-21 17:42"},
    {"WithoutSeconds", "21 Nov 2026 17:42 +0100", "2026-11-21 17:42"},
    {"OfOneDigit", "Sun, 1 Nov 2026 7:02:03 +0100", "2026-11-01 07:02"},
    {"UnknownZoneIsUtc", "Sat, 21 Nov 2026 17:42:00 -0000", "2026-11-21 18:42"},
    {"MissingZoneIsUtc", "Sat, 21 Nov 2026 17:42:00", "2026-11-21 18:42"},
    {"ZoneByName", "Sat, 21 Nov 2026 17:42:00 EST", "2026-11-21 23:42"},
    {"GreenwichByName", "Sat, 21 Nov 2026 17:42:00 GMT", "2026-11-21 18:42"},
    {"ForeignNameIsUtc", "Sat, 21 Nov 2026 17:42:00 XYZ", "2026-11-21 18:42"},
    {"ZoneWithComment", "Sat, 21 Nov 2026 17:42:00 +0100 (Central (European) Time)", "2026-11-21 17:42"},
    {"CommentInside", "Sat, 21 (the day) Nov 2026 17:42:00 +0100", "2026-11-21 17:42"},
    {"TwoDigitYear", "21 Nov 26 17:42:00 +0100", "2026-11-21 17:42"},
    {"TwoDigitYearOfLastCentury", "21 Nov 97 17:42:00 +0100", "1997-11-21 17:42"},
    {"MonthFirst", "Sat Nov 21 17:42:00 2026", "2026-11-21 18:42"},
    {"FullNames", "Saturday, 21 November 2026 17:42:00 +0100", "2026-11-21 17:42"},
    {"Hyphens", "21-Nov-2026 17:42:00 +0100", "2026-11-21 17:42"},
    {"ZoneAtTheTime", "21 Nov 2026 17:42:00+0100", "2026-11-21 17:42"},
    {"AfterNoon", "Nov 21, 2026 5:42 PM", "2026-11-21 18:42"},
    {"LeapSecond", "31 Dec 2016 23:59:60 +0000", "2017-01-01 00:59"},
    {"FoldedBlanks", "Sat,  21 Nov\t2026 17:42:00 +0100 ", "2026-11-21 17:42"},
    {"IsoWithZone", "2026-11-21T17:42:00+01:00", "2026-11-21 17:42"},
    {"IsoInUtc", "2026-11-21T16:42:00Z", "2026-11-21 17:42"},
    {"IsoWithBlank", "2026-11-21 16:42:00", "2026-11-21 17:42"},
    {"IsoWithFraction", "2026-11-21T16:42:00.123Z", "2026-11-21 17:42"},
    {"IsoWithoutSeconds", "2026-11-21T16:42Z", "2026-11-21 17:42"},
    {"NoSuchDay", "Sun, 32 Nov 2026 17:42:00 +0100", "Sun, 32 Nov 2026 17:42:00 +0100"},
    {"NoSuchDayOfFebruary", "30 Feb 2026 17:42:00 +0100", "30 Feb 2026 17:42:00 +0100"},
    {"NoSuchHour", "21 Nov 2026 25:42:00 +0100", "21 Nov 2026 25:42:00 +0100"},
    {"NoSuchMonth", "21 Foo 2026 17:42:00 +0100", "21 Foo 2026 17:42:00 +0100"},
    {"NoTime", "21 Nov 2026", "21 Nov 2026"},
    {"Words", " yesterday ", "yesterday"},
    {"Nothing", "", ""},
    {"IsoNoSuchDay", "2026-02-30T16:42:00Z", "2026-02-30T16:42:00Z"},
};

INSTANTIATE_TEST_SUITE_P(Dates, DateText, testing::ValuesIn(kDateCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(DateTextOfStrangers, IsNotSearchedWhenItIsLongerThanAnyDate) {
    const std::string field(1'000'000, '1');
    EXPECT_EQ(standard::dateText(field), field);
}
} // namespace
