#include "message/outgoing_text.h"

#include <QByteArray>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::HasSubstr;
using testing::Not;

namespace {
/** Decoded without the program's own code. */
std::string decoded(std::string text) {
    for (std::size_t soft = text.find("=\r\n"); soft != std::string::npos; soft = text.find("=\r\n", soft)) {
        text.erase(soft, 3);
    }
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(text), '=').toStdString();
}

TEST(OutgoingText, TheFormDependsOnTheTextAndOnWhatTheServerOffers) {
    const std::string longLine(999, 'x');

    const struct {
        std::string text;
        bool offered;
        TransferForm form;
        std::string charset;
    } cases[] = {
        {"", false, TransferForm::SevenBit, "us-ascii"},
        {"Hello\r\nBye", false, TransferForm::SevenBit, "us-ascii"},
        {"Hello\r\nBye", true, TransferForm::SevenBit, "us-ascii"},
        {"Gr\xc3\xb6\xc3\x9f"
         "e",
         true, TransferForm::EightBit, "utf-8"},
        {"Gr\xc3\xb6\xc3\x9f"
         "e",
         false, TransferForm::QuotedPrintable, "utf-8"},
        {longLine, true, TransferForm::QuotedPrintable, "us-ascii"},
        {std::string(998, 'x'), true, TransferForm::SevenBit, "us-ascii"},
        {std::string(998, 'x') + "\r\n" + std::string(998, 'y') + "\r\n", false, TransferForm::SevenBit,
         "us-ascii"},
        {"\xc3\xb6\r\n" + longLine + "\r\n", true, TransferForm::QuotedPrintable, "utf-8"},
    };

    for (const auto& [text, offered, form, charset] : cases) {
        const OutgoingText outgoing = outgoingText(text, offered);
        EXPECT_EQ(outgoing.form, form) << text.substr(0, 40);
        EXPECT_EQ(outgoing.charset, charset) << text.substr(0, 40);
        EXPECT_EQ(form == TransferForm::QuotedPrintable ? decoded(outgoing.bytes) : outgoing.bytes, text);
    }
}

TEST(OutgoingText, LineEndsOfAnyKindBecomeThoseOfMailAndNulIsLeftOut) {
    EXPECT_EQ(outgoingText(std::string_view("a\nb\rc\r\nd\0e\n\r\n\r", 15), true).bytes,
              "a\r\nb\r\nc\r\nde\r\n\r\n\r\n");
}

TEST(OutgoingText, BytesThatAreNoUtf8AreTakenForWindows1252) {
    const OutgoingText outgoing = outgoingText("Gr\xf6\xdf"
                                               "e \x80",
                                               true);
    EXPECT_EQ(outgoing.bytes, "Gr\xc3\xb6\xc3\x9f"
                              "e \xe2\x82\xac");
    EXPECT_EQ(outgoing.charset, "utf-8");
}

TEST(QuotedPrintable, EncodesWhatAServerCouldChangeAndNothingElse) {
    const struct {
        std::string text;
        std::string encoded;
    } cases[] = {
        {"plain text, with all !\"#$%&'()*+,-./:;<>?@[]^_`{|}~",
         "plain text, with all !\"#$%&'()*+,-./:;<>?@[]^_`{|}~"},
        {"1=1", "1=3D1"},
        {"end \r\ntab\t\r\n", "end=20\r\ntab=09\r\n"},
        {"in \t between", "in \t between"},
        {"\x7f\x01\xc3\xa4", "=7F=01=C3=A4"},
        {"\r\n\r\n", "\r\n\r\n"},
        {std::string(76, 'x'), std::string(76, 'x')},
        {std::string(77, 'x'), std::string(75, 'x') + "=\r\nxx"},
        {std::string(75, 'x') + " ", std::string(75, 'x') + "=\r\n=20"},
    };

    for (const auto& [text, encoded] : cases) {
        EXPECT_EQ(quotedPrintable(text), encoded);
    }
}

TEST(QuotedPrintable, NoLineIsLongerThan76AndNoSoftBreakPartsACharacter) {
    std::string text;
    for (int i = 0; i < 300; ++i) {
        text += std::string(static_cast<std::size_t>(i % 7), 'x') + "\xf0\x9f\x98\x80"
                                                                    "\xc3\xa4=";
    }
    const std::string encoded = quotedPrintable(text);
    EXPECT_EQ(decoded(encoded), text);
    for (std::size_t begin = 0; begin < encoded.size();) {
        const std::size_t end = std::min(encoded.find("\r\n", begin), encoded.size());
        EXPECT_LE(end - begin, 76U);
        const std::string line = encoded.substr(begin, end - begin);
        EXPECT_THAT(line, Not(testing::MatchesRegex("=[89AB].*"))) << "begins inside a character";
        begin = end + 2;
    }
}
} // namespace
