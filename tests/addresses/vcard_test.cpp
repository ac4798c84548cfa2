#include "addresses/vcard.h"
#include "addresses/vcard_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using addresses::Card;
using addresses::CardsRead;
using addresses::readCards;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/** A card of version 3.0 with these lines. */
std::string card(std::string_view lines, std::string_view version = "3.0") {
    return "BEGIN:VCARD\r\nVERSION:" + std::string(version) + "\r\n" + std::string(lines) + "END:VCARD\r\n";
}

/** The only card of a file; an empty one when there is another number of them. */
Card only(std::string_view file) {
    const CardsRead read = readCards(file);
    EXPECT_EQ(read.cards.size(), 1U) << file;
    EXPECT_EQ(read.unreadable, 0U) << file;
    return read.cards.size() == 1 ? read.cards.front() : Card();
}

struct NameCase {
    const char* what;
    std::string lines;
    std::string name;
};

class NameOfACard : public testing::TestWithParam<NameCase> {};

struct AddressCase {
    const char* what;
    std::string lines;
    std::vector<std::string> addresses;
};

class AddressesOfACard : public testing::TestWithParam<AddressCase> {};

struct UnreadableCase {
    const char* what;
    std::string file;
    std::vector<std::string> names;
    std::size_t unreadable;
};

class FileOfCards : public testing::TestWithParam<UnreadableCase> {};

} // namespace

TEST_P(NameOfACard, IsRead) {
    EXPECT_EQ(only(card(GetParam().lines)).name, GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(
    Vcard, NameOfACard,
    testing::Values(
        NameCase{"FullName", "FN:Ann Smith\r\n", "Ann Smith"},
        NameCase{"FullNameBeforeItsParts", "N:Smith;Ann;;;\r\nFN:Annie S.\r\n", "Annie S."},
        NameCase{"TheFirstFullName", "FN:Ann\r\nFN:Bob\r\n", "Ann"},
        NameCase{"AnEmptyFullNameIsNone", "FN: \r\nN:Smith;Ann\r\n", "Ann Smith"},
        NameCase{"Parts", "N:Smith;Ann;Mary;Dr.;M.D.\r\n", "Ann Mary Smith"},
        NameCase{"SeveralAdditionalNames", "N:Smith;Ann;Mary,Jane;;\r\n", "Ann Mary Jane Smith"},
        NameCase{"OnlyTheFamily", "N:Smith\r\n", "Smith"},
        NameCase{"OnlyTheGivenName", "N:;Ann;;;\r\n", "Ann"},
        NameCase{"EscapedSignsInParts", "N:Smi\\;th;An\\,n;;;\r\n", "An,n Smi;th"},
        NameCase{"Organisation", "ORG:Example\\, Inc.;Sales\r\n", "Example, Inc."},
        NameCase{"Nickname", "NICKNAME:Annie,An\r\n", "Annie"},
        NameCase{"OrganisationBeforeNickname", "NICKNAME:x\r\nORG:Example\r\n", "Example"},
        NameCase{"Nothing", "EMAIL:ann@example.org\r\n", ""}, NameCase{"LowerCase", "fn:Ann\r\n", "Ann"},
        NameCase{"Group", "item1.FN:Ann\r\n", "Ann"}, NameCase{"GroupsInsideGroups", "a.b.FN:Ann\r\n", "Ann"},
        NameCase{"Parameters", "FN;LANGUAGE=en;TYPE=work:Ann\r\n", "Ann"},
        NameCase{"ColonInAQuotedParameter", "FN;X=\"a:b;c\";Y=z:Ann\r\n", "Ann"},
        NameCase{"ColonInTheValue", "FN:Ann: Smith\r\n", "Ann: Smith"},
        NameCase{"QuotesInTheValue", "FN:Ann \"A\" Smith\r\n", "Ann \"A\" Smith"},
        NameCase{"Escapes", "FN:a\\\\b\\,c\\;d\\ne\\Nf\\:g\\\r\n", "a\\b,c;d\ne\nf:g\\"},
        NameCase{"Folded", "FN:Ann\r\n  Smi\r\n\tth\r\n", "Ann Smith"},
        NameCase{"FoldedInsideACharacter", "FN:J\xC3\r\n \xBCrgen\r\n", "J\xC3\xBCrgen"},
        NameCase{"FoldedInsideTheName", "F\r\n N:Ann\r\n", "Ann"},
        NameCase{"LineFeedsAlone", "FN:Ann\n  Smith\n", "Ann Smith"},
        NameCase{"Utf8", "FN:Zo\xC3\xAB\r\n", "Zo\xC3\xAB"},
        NameCase{"Windows1252", "FN:Zo\xEB \x96 x\r\n", "Zo\xC3\xAB \xE2\x80\x93 x"},
        NameCase{"QuotedPrintable", "FN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:Zo=C3=AB=20Q\r\n",
                 "Zo\xC3\xAB Q"},
        NameCase{"QuotedPrintableInLowerCase", "FN;encoding=quoted-printable:Zo=c3=ab\r\n", "Zo\xC3\xAB"},
        NameCase{"QuotedPrintableAlone", "FN;QUOTED-PRINTABLE:Zo=EB\r\n", "Zo\xC3\xAB"},
        NameCase{"QuotedPrintableOverLines", "FN;ENCODING=QUOTED-PRINTABLE:Zo=C3=\r\n=AB=\r\n Q\r\n",
                 "Zo\xC3\xAB Q"},
        NameCase{"QuotedPrintableThatIsNone", "FN;ENCODING=QUOTED-PRINTABLE:1=2 =Z\r\n", "1=2 =Z"},
        NameCase{"EqualsSignAtTheEndOfAPlainLine", "FN:a=\r\nNICKNAME:b\r\n", "a="},
        NameCase{"QuotedPrintableParts", "N;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;J=C3=B6rg\r\n",
                 "J\xC3\xB6rg M\xC3\xBCller"},
        NameCase{"SpacesAround", "FN:   Ann   \r\n", "Ann"},
        NameCase{"ALineThatIsNoProperty", "rubbish\r\n\r\n:x\r\nFN:Ann\r\n", "Ann"},
        NameCase{"ALineThatIsTooLong", "NOTE:" + std::string(100'000, 'x') + "\r\nFN:Ann\r\n", "Ann"},
        NameCase{"ANameThatIsTooLong", "FN:" + std::string(100'000, 'x') + "\r\nNICKNAME:Ann\r\n", "Ann"},
        NameCase{"APictureBeside",
                 "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQ\r\n AAAA=\r\n BBBB==\r\n\r\nFN:Ann\r\n", "Ann"}),
    [](const auto& one) { return std::string(one.param.what); });

TEST_P(AddressesOfACard, AreReadThePreferredOneFirst) {
    EXPECT_EQ(only(card(GetParam().lines)).addresses, GetParam().addresses);
}

INSTANTIATE_TEST_SUITE_P(
    Vcard, AddressesOfACard,
    testing::Values(
        AddressCase{"None", "FN:Ann\r\n", {}},
        AddressCase{"One", "EMAIL:ann@example.org\r\n", {"ann@example.org"}},
        AddressCase{"InTheirOrder", "EMAIL:a@x.org\r\nEMAIL:b@x.org\r\n", {"a@x.org", "b@x.org"}},
        AddressCase{"PreferredByItsType",
                    "EMAIL;TYPE=INTERNET:a@x.org\r\nEMAIL;TYPE=INTERNET,pref:b@x.org\r\n",
                    {"b@x.org", "a@x.org"}},
        AddressCase{"PreferredByAQuotedType",
                    "EMAIL:a@x.org\r\nEMAIL;TYPE=\"work,PREF\":b@x.org\r\n",
                    {"b@x.org", "a@x.org"}},
        AddressCase{"PreferredAsIn21",
                    "EMAIL;INTERNET:a@x.org\r\nEMAIL;PREF;INTERNET:b@x.org\r\n",
                    {"b@x.org", "a@x.org"}},
        AddressCase{"PreferredByNumber",
                    "EMAIL:a@x.org\r\nEMAIL;PREF=9:b@x.org\r\nEMAIL;PREF=\"2\":c@x.org\r\n",
                    {"c@x.org", "b@x.org", "a@x.org"}},
        AddressCase{"ANumberThatIsNone",
                    "EMAIL:a@x.org\r\nEMAIL;PREF=x:b@x.org\r\nEMAIL;PREF=999999999999:c@x.org\r\n",
                    {"a@x.org", "b@x.org", "c@x.org"}},
        AddressCase{"Grouped", "item1.EMAIL;type=INTERNET:ann@x.org\r\nitem1.X-ABLabel:x\r\n", {"ann@x.org"}},
        AddressCase{"Escaped", "EMAIL:\"a\\,b\"@x.org\r\n", {"\"a,b\"@x.org"}},
        AddressCase{"AUri", "EMAIL;VALUE=uri:mailto:ann@x.org\r\n", {"ann@x.org"}},
        AddressCase{"Empty", "EMAIL:\r\nEMAIL: \r\n", {}},
        AddressCase{"Trimmed", "EMAIL: ann@x.org \r\n", {"ann@x.org"}},
        AddressCase{"AnotherProperty", "EMAIL2:a@x.org\r\nX-EMAIL:b@x.org\r\n", {}}),
    [](const auto& one) { return std::string(one.param.what); });

TEST_P(FileOfCards, TellsItsCardsAndHowManyCannotBeRead) {
    const CardsRead read = readCards(GetParam().file);
    std::vector<std::string> names;
    for (const Card& one : read.cards) {
        names.push_back(one.name);
    }
    EXPECT_EQ(names, GetParam().names);
    EXPECT_EQ(read.unreadable, GetParam().unreadable);
}

namespace {
const std::string kCardOfAnn = card("FN:Ann\r\n");
const std::string kCardOfBob = card("FN:Bob\r\n", "4.0");
const std::string begin = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
} // namespace

INSTANTIATE_TEST_SUITE_P(
    Vcard, FileOfCards,
    testing::Values(
        UnreadableCase{"Several", kCardOfAnn + kCardOfBob + kCardOfAnn, {"Ann", "Bob", "Ann"}, 0},
        UnreadableCase{"Empty", "", {}, 0}, UnreadableCase{"Blank", " \r\n\n\t", {}, 0},
        UnreadableCase{"NoCardAtAll", "Dear Ann,\r\n", {}, 1},
        UnreadableCase{"BinaryRubbish", std::string("\xFF\xD8\0\1\n\n", 6), {}, 1},
        UnreadableCase{"ByteOrderMark", "\xEF\xBB\xBF" + kCardOfAnn, {"Ann"}, 0},
        UnreadableCase{"Utf16",
                       std::string("\xFF\xFE"
                                   "B\0E\0G\0I\0N\0",
                                   12),
                       {},
                       1},
        UnreadableCase{"Version21", card("FN:Ann\r\n", "2.1"), {"Ann"}, 0},
        UnreadableCase{"OtherVersion", card("FN:Ann\r\n", "5.0") + kCardOfBob, {"Bob"}, 1},
        UnreadableCase{"NoVersion", "BEGIN:VCARD\r\nFN:Ann\r\nEND:VCARD\r\n" + kCardOfBob, {"Bob"}, 1},
        UnreadableCase{"VersionBehind", "BEGIN:VCARD\r\nFN:Ann\r\nVERSION:4.0\r\nEND:VCARD\r\n", {"Ann"}, 0},
        UnreadableCase{"NoEnd", begin + "FN:Ann\r\n", {}, 1},
        UnreadableCase{"NoEndBeforeTheNext", begin + "FN:Ann\r\n" + kCardOfBob, {"Bob"}, 1},
        UnreadableCase{"NoLineEndBehindTheEnd", begin + "FN:Ann\r\nEND:VCARD", {"Ann"}, 0},
        UnreadableCase{"OneInsideAnother", begin + kCardOfBob + "FN:Ann\r\nEND:VCARD\r\n", {"Bob"}, 1},
        UnreadableCase{"AnEndTooMany", kCardOfAnn + "END:VCARD\r\n" + kCardOfBob, {"Ann", "Bob"}, 0},
        UnreadableCase{
            "LettersOfEitherCase", "begin:vcard\r\nversion:4.0\r\nfn:Ann\r\nEnd:vCard\r\n", {"Ann"}, 0},
        UnreadableCase{
            "SpacesBehind", "BEGIN:VCARD \r\nVERSION: 4.0 \r\nFN:Ann\r\nEND:VCARD \r\n", {"Ann"}, 0},
        UnreadableCase{"TextBetween", kCardOfAnn + "\r\nhello\r\n\r\n" + kCardOfBob, {"Ann", "Bob"}, 0},
        UnreadableCase{
            "AnotherKindOfComponent", "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nEND:VCALENDAR\r\n", {}, 1},
        UnreadableCase{
            "CutInTheMiddle", (kCardOfAnn + kCardOfBob).substr(0, kCardOfAnn.size() + 20), {"Ann"}, 1}),
    [](const auto& one) { return std::string(one.param.what); });

TEST(Vcard, WithThousandsOfPropertiesIsUnreadableAndTheNextOneIsNot) {
    std::string lines;
    for (int count = 0; count < 3'000; ++count) {
        lines += "TEL:1\r\n";
    }
    const CardsRead read = readCards(card(lines) + kCardOfAnn);
    EXPECT_THAT(read.cards, ElementsAre(Card{"Ann", {}}));
    EXPECT_EQ(read.unreadable, 1U);
}

TEST(Vcard, HasNoMoreThanTwentyAddresses) {
    std::string lines;
    for (int count = 0; count < 100; ++count) {
        lines += "EMAIL:a" + std::to_string(count) + "@x.org\r\n";
    }
    EXPECT_THAT(only(card(lines)).addresses, SizeIs(20));
}

TEST(Vcard, OfFoldsAloneTakesTimeInProportionToItsLength) {
    std::string file = begin + "FN;ENCODING=QUOTED-PRINTABLE:";
    for (int count = 0; count < 200'000; ++count) {
        file += "=\r\n ";
    }
    const CardsRead read = readCards(file);
    EXPECT_THAT(read.cards, IsEmpty());
    EXPECT_EQ(read.unreadable, 1U);
}

TEST(Vcard, PartsOfAValueEndAtSeparatorsWithoutABackslash) {
    EXPECT_THAT(addresses::partsOfValue("a;b\\;c;;d\\\\;e", ';'),
                ElementsAre("a", "b\\;c", "", "d\\\\", "e"));
    EXPECT_THAT(addresses::partsOfValue("", ';'), ElementsAre(""));
    EXPECT_THAT(addresses::partsOfValue("a\\", ';'), ElementsAre("a\\"));
}
