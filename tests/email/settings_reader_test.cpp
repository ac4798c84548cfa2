#include "email/settings_file.h"
#include "platform/runtime_error.h"
#include "tests/email/settings_reading.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using support::goodLines;
using support::goodValues;
using support::joined;
using support::readFrom;
using support::Reading;
using support::readLines;
using support::readText;
using support::readWithLine;
using testing::ElementsAre;
namespace errors = platform::errors;

TEST(SettingsReader, TakesAllSixteenValues) {
    const Reading reading = readLines(goodLines());
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.values(), goodValues());
    EXPECT_EQ(reading.derived.AtDomain.toStdString(), "@school.example");
    EXPECT_EQ(reading.derived.WavCommand.toStdString(), "play");
    EXPECT_THAT(reading.setupButton, ElementsAre(false));
}

TEST(SettingsReader, AMissingFileLeavesEveryDefaultInForce) {
    const support::TemporaryFolder folder;
    const Reading reading = readFrom(folder);
    EXPECT_EQ(reading.error, errors::FileNotFound);
    EXPECT_EQ(reading.values(), Reading().values());
    EXPECT_THAT(reading.setupButton, ElementsAre());
}

TEST(SettingsReader, LinesInAnotherOrderLandInTheSettingOfTheirLineNumber) {
    std::vector<std::string> lines = goodLines();
    std::swap(lines.at(2), lines.at(6));
    std::swap(lines.at(0), lines.at(18));
    const Reading reading = readLines(lines);
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.settings.POPServer.toStdString(), "Hill School");
    EXPECT_EQ(reading.settings.Institution.toStdString(), "pop.school.example");
    EXPECT_EQ(reading.settings.ShowSetup.toStdString(), "no");
    EXPECT_EQ(reading.settings.AddressLookup.toStdString(), "no");
}

TEST(SettingsReader, AFileWithALineMissingInTheMiddleShiftsTheLaterValues) {
    std::vector<std::string> lines = goodLines();
    lines.erase(lines.begin() + 7); // [Application Options]
    lines.at(14) = "16";
    lines.at(15) = "16"; // the LDAP server's line, which is read as GetMailEvery now and must be a number
    lines.emplace_back("one more");
    const Reading reading = readLines(lines);
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.settings.Institution.toStdString(), "Hill School");
    EXPECT_EQ(reading.settings.PlayWav.toStdString(), "yes");        // was ShowDatabase
    EXPECT_EQ(reading.settings.SendAttachments.toStdString(), "no"); // was SaveDirectory
    EXPECT_EQ(reading.settings.SaveDirectory.toStdString(), "yes");  // was AllowPrinting
    EXPECT_EQ(reading.settings.LDAPServer.toStdString(), "o=Hill School,c=gb");
    EXPECT_EQ(reading.settings.AddressLookup.toStdString(), "one more");
}

TEST(SettingsReader, SectionLinesAreSkippedWhateverTheyHold) {
    std::vector<std::string> lines = goodLines();
    lines.at(1) = "POPServer=wrong";
    lines.at(5) = "";
    lines.at(7) = "===";
    const Reading reading = readLines(lines);
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.values(), goodValues());
}

TEST(SettingsReader, KeysAreNeverLookedAt) {
    std::vector<std::string> lines = goodLines();
    for (std::string& line : lines) {
        const std::size_t equals = line.find('=');
        line = "x" + line.substr(equals == std::string::npos ? 0 : equals);
    }
    EXPECT_EQ(readLines(lines).values(), goodValues());
}

TEST(SettingsReader, PlayWavWithACapitalYReadsAsNoAndCloses) {
    const Reading reading = readWithLine(9, "PlayWav=Yes");
    EXPECT_EQ(reading.settings.PlayWav.toStdString(), "no");
    EXPECT_EQ(reading.derived.WavCommand.toStdString(), "close");
}

TEST(SettingsReader, SaveCopyWithACapitalYStaysAsWritten) {
    EXPECT_EQ(readWithLine(14, "SaveCopy=Yes").settings.SaveCopy.toStdString(), "Yes");
}

TEST(SettingsReader, PrintingAndGetMailSwitchesStayAsWritten) {
    EXPECT_EQ(readWithLine(13, "AllowPrinting= yes").settings.AllowPrinting.toStdString(), " yes");
    EXPECT_EQ(readWithLine(15, "ShowGetMail=YES").settings.ShowGetMail.toStdString(), "YES");
}

TEST(SettingsReader, ACapitalisedOrPaddedOrEmptySwitchBecomesNo) {
    for (const char* value : {"Yes", "YES", " yes", "yes ", "", "ja"}) {
        EXPECT_EQ(readWithLine(1, std::string("ShowSetup=") + value).settings.ShowSetup.toStdString(), "no");
        EXPECT_EQ(readWithLine(10, std::string("k=") + value).settings.ShowDatabase.toStdString(), "no");
        EXPECT_EQ(readWithLine(11, std::string("k=") + value).settings.SendAttachments.toStdString(), "no");
    }
}

TEST(SettingsReader, ShowSetupShowsTheButton) {
    const Reading reading = readWithLine(1, "ShowSetup=yes");
    EXPECT_EQ(reading.settings.ShowSetup.toStdString(), "yes");
    EXPECT_THAT(reading.setupButton, ElementsAre(true));
}

TEST(SettingsReader, TheSetupButtonHearsOfItsLineBeforeLaterLinesFail) {
    const Reading reading = readText("ShowSetup=yes\r\n");
    EXPECT_EQ(reading.error, errors::InputPastEndOfFile);
    EXPECT_THAT(reading.setupButton, ElementsAre(true));
}

TEST(SettingsReader, AnInstitutionKeepsTheSpacesAroundIt) {
    EXPECT_EQ(readWithLine(7, "Institution=  Hill School ").settings.Institution.toStdString(),
              "  Hill School ");
}

TEST(SettingsReader, AnIntervalOfLettersIsErrorThirteen) {
    const Reading reading = readWithLine(16, "GetMailEvery=often");
    EXPECT_EQ(reading.error, errors::TypeMismatch);
    EXPECT_EQ(reading.settings.GetMailEvery, 0);
    EXPECT_EQ(reading.settings.ShowGetMail.toStdString(), "yes");
    EXPECT_EQ(reading.settings.LDAPServer, email::Settings().LDAPServer);
}

TEST(SettingsReader, AnEmptyIntervalIsErrorThirteen) {
    EXPECT_EQ(readWithLine(16, "GetMailEvery=").error, errors::TypeMismatch);
    EXPECT_EQ(readWithLine(16, "").error, errors::TypeMismatch);
}

TEST(SettingsReader, AnIntervalOutOfRangeIsErrorSix) {
    EXPECT_EQ(readWithLine(16, "GetMailEvery=32768").error, errors::Overflow);
    EXPECT_EQ(readWithLine(16, "GetMailEvery=-32769").error, errors::Overflow);
}

TEST(SettingsReader, AnIntervalMayHaveSpacesAndAFraction) {
    EXPECT_EQ(readWithLine(16, "GetMailEvery= 4.6 ").settings.GetMailEvery, 5);
    EXPECT_EQ(readWithLine(16, "GetMailEvery=-1").settings.GetMailEvery, -1);
}

TEST(SettingsReader, AFileOfEighteenLinesIsErrorSixtyTwoWithAllReadSoFar) {
    std::vector<std::string> lines = goodLines();
    lines.pop_back();
    const Reading reading = readLines(lines);
    EXPECT_EQ(reading.error, errors::InputPastEndOfFile);
    std::vector<std::string> expected = goodValues();
    expected.back() = "Personal Address Book";
    EXPECT_EQ(reading.values(), expected);
}

TEST(SettingsReader, AfterAnyNumberOfLinesTheEarlierValuesAreReadAndTheLaterOnesDefaults) {
    // The number of settings that the first n lines hold.
    const std::vector<std::size_t> settingsRead = {0, 1, 1, 2,  3,  4,  4,  5,  5, 6,
                                                   7, 8, 9, 10, 11, 12, 13, 14, 15};
    for (std::size_t count = 0; count < settingsRead.size(); ++count) {
        std::vector<std::string> lines = goodLines();
        lines.resize(count);
        const Reading reading = readLines(lines);
        EXPECT_EQ(reading.error, errors::InputPastEndOfFile) << count;
        const std::vector<std::string> good = goodValues();
        std::vector<std::string> expected = Reading().values();
        std::copy_n(good.begin(), settingsRead.at(count), expected.begin());
        EXPECT_EQ(reading.values(), expected) << count;
    }
}

TEST(SettingsReader, AFileOfNoBytesIsErrorSixtyTwoWithEveryDefault) {
    const Reading reading = readText("");
    EXPECT_EQ(reading.error, errors::InputPastEndOfFile);
    EXPECT_EQ(reading.values(), Reading().values());
}

TEST(SettingsReader, LinesAfterTheNineteenthAreNeverRead) {
    EXPECT_EQ(readText(joined(goodLines()) + "Twentieth=line\r\n").values(), goodValues());
    std::vector<std::string> lines = goodLines();
    std::size_t given = 0;
    email::Settings settings;
    email::DerivedValues derived;
    email::readSettings([&] { return lines.at(given++); }, settings, derived, [](bool) {});
    EXPECT_EQ(given, 19U);
}

TEST(SettingsReader, TheLastLineMayLackItsEnd) {
    std::string text = joined(goodLines());
    text.resize(text.size() - 2);
    EXPECT_EQ(readText(text).values(), goodValues());
}

TEST(SettingsReader, AFifthLineWithoutEqualsIsTheDomainAsAWhole) {
    const Reading reading = readWithLine(5, "DomainName school.example");
    EXPECT_EQ(reading.settings.DomainName.toStdString(), "DomainName school.example");
    EXPECT_EQ(reading.derived.AtDomain.toStdString(), "@DomainName school.example");
}

TEST(SettingsReader, LineFeedsAloneAndCarriageReturnsAloneEndLinesToo) {
    EXPECT_EQ(readText(joined(goodLines(), "\n")).values(), goodValues());
    EXPECT_EQ(readText(joined(goodLines(), "\r")).values(), goodValues());
}

TEST(SettingsReader, AByteOrderMarkBeforeTheFirstKeyDoesNoHarm) {
    const Reading reading = readText("\xEF\xBB\xBF" + joined(goodLines()));
    EXPECT_EQ(reading.error, 0);
    EXPECT_EQ(reading.values(), goodValues());
}

TEST(SettingsReader, ANulBelongsToTheValue) {
    using namespace std::string_literals;
    EXPECT_EQ(readWithLine(7, "Institution=Hill\0School"s).settings.Institution.toStdString(),
              "Hill\0School"s);
    EXPECT_EQ(readWithLine(9, "PlayWav=yes\0"s).settings.PlayWav.toStdString(), "no");
    EXPECT_EQ(readWithLine(16, "GetMailEvery=5\0"s).error, errors::TypeMismatch);
}

TEST(SettingsReader, TextOfTheOldCodePageAndUtf8AreBothUnderstood) {
    EXPECT_EQ(readWithLine(7, "Institution=K\xF6ln").settings.Institution.toStdString(), "K\xC3\xB6ln");
    EXPECT_EQ(readWithLine(7, "Institution=K\xC3\xB6ln").settings.Institution.toStdString(), "K\xC3\xB6ln");
}

struct LineCase {
    const char* name;
    const char* line;
    const char* value;
};

void PrintTo(const LineCase& test, std::ostream* stream) {
    *stream << test.name;
}

class ValueOfLine : public testing::TestWithParam<LineCase> {};

TEST_P(ValueOfLine, IsWhatStandsAfterTheFirstEquals) {
    EXPECT_EQ(email::valueOfLine(GetParam().line), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, ValueOfLine,
    testing::Values(LineCase{"Plain", "POPServer=pop", "pop"},
                    LineCase{"FurtherEqualsBelongToTheValue", "LDAPSearchBase=c=us", "c=us"},
                    LineCase{"BlanksStay", "k =  a b ", "  a b "}, LineCase{"TabsStay", "k=\ta\t", "\ta\t"},
                    LineCase{"NoEqualsMeansTheWholeLine", " whole line ", " whole line "},
                    LineCase{"EqualsAtTheEnd", "key=", ""}, LineCase{"EqualsAlone", "=", ""},
                    LineCase{"EqualsFirst", "=value", "value"}, LineCase{"EmptyLine", "", ""},
                    LineCase{"QuotesAreNothingSpecial", "k=\"a\"", "\"a\""}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
