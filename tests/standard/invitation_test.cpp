#include "standard/invitation.h"
#include "tests/standard/local_zone.h"

#include <gtest/gtest.h>

#include <string>

namespace {
std::string event(const std::string& lines) {
    return "BEGIN:VCALENDAR\r\nMETHOD:REQUEST\r\nBEGIN:VEVENT\r\n" + lines +
           "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

struct InvitationCase {
    const char* name;
    std::string calendar;
    std::string text;
};

class Invitation : public testing::TestWithParam<InvitationCase> {};

TEST_P(Invitation, SaysWhatWhereAndWhen) {
    const support::LocalZone berlin("Europe/Berlin");
    EXPECT_EQ(standard::invitationText(GetParam().calendar), GetParam().text);
}

const InvitationCase kInvitationCases[] = {
    {"Whole", event("DTSTART;TZID=Europe/Berlin:20261203T153000\r\nSUMMARY:Tea\r\nLOCATION:Room 1\r\n"),
     "Tea\r\nWhere: Room 1\r\nWhen: 2026-12-03 15:30\r\n"},
    {"LocalTime", event("DTSTART:20261203T153000\r\n"), "When: 2026-12-03 15:30\r\n"},
    {"Utc", event("DTSTART:20261203T143000Z\r\n"), "When: 2026-12-03 15:30\r\n"},
    {"AnotherZone", event("DTSTART;TZID=America/New_York:20261203T093000\r\n"),
     "When: 2026-12-03 15:30 (2026-12-03 09:30 America/New_York)\r\n"},
    {"AnotherZoneOfTheSameTime", event("DTSTART;TZID=Europe/Paris:20261203T153000\r\n"),
     "When: 2026-12-03 15:30\r\n"},
    {"ZoneOfWindows", event("DTSTART;TZID=\"Eastern Standard Time\":20261203T093000\r\n"),
     "When: 2026-12-03 15:30 (2026-12-03 09:30 Eastern Standard Time)\r\n"},
    {"ZoneBehindAPrefix", event("DTSTART;TZID=/maker.example/2006/Europe/Berlin:20261203T153000\r\n"),
     "When: 2026-12-03 15:30\r\n"},
    {"ZoneOfNobody", event("DTSTART;TZID=Atlantis:20261203T153000\r\n"),
     "When: 2026-12-03 15:30 (Atlantis)\r\n"},
    {"WholeDay", event("DTSTART;VALUE=DATE:20261203\r\n"), "When: 2026-12-03\r\n"},
    {"NoSuchDay", event("DTSTART:20261303T153000\r\n"), "When: 20261303T153000\r\n"},
    {"Folded", event("SUMMARY:Tea \r\n and cake\r\n"), "Tea and cake\r\n"},
    {"Escaped", event("SUMMARY:Tea\\, cake\\; milk\\nand more\r\n"), "Tea, cake; milk and more\r\n"},
    {"ColonInAParameter", event("SUMMARY;ALTREP=\"http://x.example\":Tea\r\n"), "Tea\r\n"},
    {"AlarmInside", event("BEGIN:VALARM\r\nSUMMARY:Alarm\r\nEND:VALARM\r\nSUMMARY:Tea\r\n"), "Tea\r\n"},
    {"ZoneBeside",
     "BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nBEGIN:STANDARD\r\nDTSTART:19701025T030000\r\nEND:STANDARD\r\n"
     "END:VTIMEZONE\r\nBEGIN:VEVENT\r\nSUMMARY:Tea\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
     "Tea\r\n"},
    {"LineFeedsAlone", "BEGIN:VEVENT\nSUMMARY:Tea\nEND:VEVENT\n", "Tea\r\n"},
    {"NoEvent", "BEGIN:VCALENDAR\r\nSUMMARY:Tea\r\nEND:VCALENDAR\r\n", ""},
    {"Nothing", "", ""},
};

INSTANTIATE_TEST_SUITE_P(Calendars, Invitation, testing::ValuesIn(kInvitationCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(InvitationOfStrangers, HasAFewEventsOnly) {
    std::string calendar;
    for (int number = 0; number < 10'000; ++number) {
        calendar += "BEGIN:VEVENT\r\nSUMMARY:x\r\nEND:VEVENT\r\n";
    }
    EXPECT_LT(standard::invitationText(calendar).size(), 1'000U);
}
} // namespace
