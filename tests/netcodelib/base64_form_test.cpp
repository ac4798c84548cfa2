#include "components/netcodelib/base64_form.h"
#include "platform/runtime_error.h"
#include "tests/support/base64_text.h"
#include "tests/support/pieces.h"
#include "tests/support/random_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

using netcodelib::Base64Form;
using namespace std::string_literals;

std::string encoded(std::size_t bytes) {
    return support::base64Text(support::randomBytes(bytes, 1));
}

std::string inLinesOf(std::size_t letters, std::string text) {
    std::erase_if(text, [](char character) { return character == '\r' || character == '\n'; });
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at += letters) {
        lines.append(text, at, letters).append("\r\n");
    }
    return lines;
}

/** Eight lines of 76 letters, the last two characters of which are padding, with something put in. */
std::string disturbed(std::size_t at, const std::string& something) {
    std::string text = encoded(454);
    return text.insert(at, something);
}

int errorOf(std::string_view text, std::size_t pieceBytes = std::string_view::npos) {
    Base64Form form;
    return platform::errorNumberOf([&] {
        support::forEachPiece(text, pieceBytes, [&](std::string_view piece) { form.add(piece); });
        form.finish();
    });
}

struct FormCase {
    const char* name;
    std::string text;
};

const std::vector<FormCase> kBase64{
    {"Nothing", ""},
    {"NothingInItsPart", "\r\n--\r\n"},
    {"EmptyLines", "\r\n\r\n--\r\n"},
    {"OneByte", "Zg=="},
    {"TwoBytes", "Zm8="},
    {"ThreeBytes", "Zm9v"},
    {"ThreeBytesInTheirPart", "\r\nZm9v\r\n--\r\n"},
    {"BoundaryOnTheLastLine", "\r\nZm9v--\r\n"},
    {"BoundaryBehindPadding", "\r\nZg==--\r\n"},
    {"ShortLines", "Zm9v\r\nYmFy\r\nZm9vYmFy\r\nZg==\r\n--\r\n"},
    {"LineFeedsAlone", "Zm9v\nYmFy\n--\n"},
    {"EmptyLinesBetween", "Zm9v\r\n\r\n\r\nYmFy\r\n\r\n--\r\n\r\n"},
    {"WhiteSpaceAtTheEndsOfLines", " Zm9v\t\r\n\tYmFy  \r\n \r\n--\r\n"},
    {"LinesOf76", encoded(10'000)},
    {"LinesOf64", inLinesOf(64, encoded(10'000))},
    {"OneLongLine", inLinesOf(1'000'000, encoded(100'000))},
    {"LinesThatAGatewayBrokeInTwo", inLinesOf(75, encoded(10'000))},
    {"LinesThatAGatewayBrokeAt998", inLinesOf(998, encoded(10'000))},
    {"PaddingBrokenInTwo", inLinesOf(607, encoded(454))},
    {"BitsLeftOver", "Zh=="},
    {"GroupOfPadding", "Zm9v===="},
    {"NothingButPadding", "===="},
    {"PaddingThenAListsText", "Zg==\r\n__________\r\nfriends mailing list\r\nRegards\r\n--\r\n"},
    {"PaddingThenASignature", "Zg==\r\n-- \r\nTo leave the list, write to us\r\n--\r\n"},
    {"ForeignCharacterPutIn", disturbed(100, "*")},
    {"BlankPutIn", disturbed(100, " ")},
    {"ForeignCharacterPutIntoTheFirstLine", disturbed(10, "\x80")},
    {"SeveralForeignCharactersPutIn", disturbed(10, "#! ")},
    {"LastLettersOfTheAlphabet", "////++++\r\n"},
};

const std::vector<FormCase> kOther{
    {"OnlyTheBoundary", "--\r\n"},
    {"Json", "\r\n{\"name\": \"value\", \"list\": [1, 2, 3]}\r\n--\r\n"},
    {"JsonInLines", "\r\n{\r\n  \"name\": 1\r\n}\r\n--\r\n"},
    {"JsonWithEncodedTextInside", "\r\n{\"data\": \"" + std::string(9'996, 'A') + "\"}\r\n--\r\n"},
    {"JsonWithEncodedLinesInside", "\r\n{\"data\": \"" + encoded(9'999) + "\"}\r\n--\r\n"},
    {"Xml", "\r\n<?xml version=\"1.0\"?>\r\n<a>b</a>\r\n--\r\n"},
    {"Sentence", "\r\nPlease find the report attached\r\n--\r\n"},
    {"TwoWordsOfEightLetters", "\r\nThank you\r\n--\r\n"},
    {"WordsOfFourLetters", "\r\nThis text goes over here\r\n--\r\n"},
    {"SpacedLetters", "Q U J D\r\n"},
    {"Hello", "\r\nHello\r\n--\r\n"},
    {"HelloWorldInTwoLines", "\r\nHello\r\nbig\r\n--\r\n"},
    {"ListOfWords", "\r\nalpha\r\nbeta\r\ngamma\r\ndelta\r\n--\r\n"},
    {"ListOfNumbers", "\r\n1,2,3,4\r\n5,6,7,8\r\n--\r\n"},
    {"QuotedPrintable", "\r\nGr=C3=BC=C3=9Fe aus K=C3=B6ln\r\n--\r\n"},
    {"QuotedPrintableWithASoftLineEnd", "\r\nabc=\r\ndef ghi\r\n--\r\n"},
    {"QuotedPrintableOfLettersOnly",
     "\r\n" + std::string(75, 'a') + "=\r\n" + std::string(75, 'b') + "=\r\nc\r\n"},
    {"NameWithoutValue", "\r\nabc=\r\nother=1 2\r\n--\r\n"},
    {"NameAndValue", "\r\nabc=defg\r\n--\r\n"},
    {"Uuencode", "\r\nbegin 644 a\r\n#9F]O\r\n`\r\nend\r\n--\r\n"},
    {"Pem", "\r\n-----BEGIN CERTIFICATE-----\r\n" + inLinesOf(64, encoded(960)) +
                "-----END CERTIFICATE-----\r\n--\r\n"},
    {"OpenPgp", "\r\n-----BEGIN PGP MESSAGE-----\r\n\r\n" + encoded(570) +
                    "=aBcD\r\n-----END PGP MESSAGE-----\r\n--\r\n"},
    {"Checksums", "\r\n" + std::string(64, 'a') + "  a.txt\r\n" + std::string(64, 'b') + "  b.txt\r\n--\r\n"},
    {"Utf8", "\r\n\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\r\n--\r\n"},
    {"Utf16", "\r\n\xFF\xFEH\0e\0l\0p\0"s},
    {"Binary", "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s},
    {"AddressSafeAlphabet", "Zm9v-_-_YmFy"},

    {"OneLetter", "Z"},
    {"CutInsideAByte", "Zm9vY"},
    {"CutBehindAByte", "Zm9vYg"},
    {"CutBehindTwoBytes", "Zm9vYmE"},
    {"CutInsideThePadding", "Zm9vYg="},
    {"CutBeforeThePadding", "Zm9vY==="},
    {"PaddingThatReplacesALetter", "Zm9v="},
    {"LineThatHasLostALetter", encoded(570).erase(100, 1)},
    {"ForeignCharacterInPlaceOfALetter", encoded(570).replace(100, 1, "*")},
    {"ForeignCharactersInPlaceOfAGroup", encoded(570).replace(100, 4, "****")},
    {"ForeignCharacterInTheLastLine", encoded(100).insert(80, "*")},
    {"ForeignCharacterInTheOnlyLine", "Zm9v*YmFy"},
    {"ForeignCharactersInEveryLine", encoded(57).insert(5, "*") + encoded(57).insert(5, "*")},
    {"LineOfForeignCharacters", "Zm9v\r\n****\r\nYmFy\r\n"},
    {"FurtherTextBehindPadding", "Zm8=\r\nZm9v\r\n"},
    {"FurtherTextOnThePaddedLine", "Zm8=Zm9v"},
    {"FurtherTextBehindABoundary", "Zm9v\r\n--\r\nZm9v\r\n"},
    {"ListsTextBehindNoPadding", "Zm9v\r\n__________\r\nfriends mailing list\r\n"},
    {"WordBehindPadding", "Zg==\r\nRegards\r\n"},
};

class Base64FormOfBase64 : public testing::TestWithParam<FormCase> {};

class Base64FormOfOther : public testing::TestWithParam<FormCase> {};

TEST_P(Base64FormOfBase64, IsTakenInPiecesOfEverySize) {
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        EXPECT_EQ(errorOf(GetParam().text, pieceBytes), 0) << pieceBytes;
    }
}

TEST_P(Base64FormOfOther, IsRefusedInPiecesOfEverySize) {
    for (const std::size_t pieceBytes : support::kPieceSizes) {
        EXPECT_EQ(errorOf(GetParam().text, pieceBytes), 20502) << pieceBytes;
    }
}

const auto kNameOf = [](const testing::TestParamInfo<FormCase>& test) { return test.param.name; };
INSTANTIATE_TEST_SUITE_P(Texts, Base64FormOfBase64, testing::ValuesIn(kBase64), kNameOf);
INSTANTIATE_TEST_SUITE_P(Texts, Base64FormOfOther, testing::ValuesIn(kOther), kNameOf);

TEST(Base64Form, WhateverIsEncodedIsTakenInLinesOfEveryUsualLength) {
    for (std::size_t bytes = 0; bytes < 400; ++bytes) {
        for (const std::size_t letters :
             {std::size_t{60}, std::size_t{64}, std::size_t{72}, std::size_t{76}}) {
            EXPECT_EQ(errorOf("\r\n" + inLinesOf(letters, encoded(bytes)) + "--\r\n"), 0) << bytes;
        }
    }
}

TEST(Base64Form, ATextThatIsCutAnywhereButBetweenTwoGroupsIsRefused) {
    const std::string text = encoded(571);
    for (std::size_t length = 0; length < text.size() - 4; ++length) {
        const std::string kept = text.substr(0, length);
        const std::size_t letters =
            length - 2 * static_cast<std::size_t>(std::count(kept.begin(), kept.end(), '\n'));
        const bool insideLineEnd = kept.ends_with('\r');
        EXPECT_EQ(errorOf(kept) == 0, (letters - (insideLineEnd ? 1 : 0)) % 4 == 0) << length;
    }
}

TEST(Base64Form, NoOtherCharacterIsTakenForALetterWhereverItStands) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int code = 0; code < 256; ++code) {
        for (std::size_t at = 0; at < 16; ++at) {
            std::string text = "Zm9vYmFyZm9vYmFy";
            text[at] = static_cast<char>(code);
            const bool taken = errorOf(text) == 0;
            const bool letter = alphabet.find(static_cast<char>(code)) != std::string_view::npos;
            // Padding may replace the last letter only.
            EXPECT_EQ(taken, letter || (code == '=' && at == 15)) << code << " at " << at;
        }
    }
}

TEST(Base64Form, AWordThatIsBase64ByChanceIsTaken) {
    // Such a text cannot be told from encoded text, and the user must be able to save an attachment that is
    // one.
    for (const char* word : {"Test", "true", "deadbeef", "Anna\r\nPaul\r\nMary"}) {
        EXPECT_EQ(errorOf("\r\n"s + word + "\r\n--\r\n"), 0) << word;
    }
}

} // namespace
