#include "message/header_text.h"
#include "tests/support/encoded_words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using support::decodedWords;
using support::wordsIn;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {
TEST(HeaderText, TextThatEveryReaderTakesForItselfStaysAsItIs) {
    for (const char* const text : {"Hello", "Re: the report of May", "a=b? yes (no) \"x\" \\", "=?", ""}) {
        const std::string typed = std::string(text) == "=?" ? "= ?" : text;
        EXPECT_EQ(headerText(QString::fromStdString(typed)), typed);
    }
}

TEST(HeaderText, TextThatAReaderCouldChangeOrTakeForSomethingElseIsEncoded) {
    const std::vector<QString> texts = {
        QStringLiteral("=?utf-8?Q?typed?="),
        QStringLiteral(" leading"),
        QStringLiteral("trailing "),
        QStringLiteral("two  spaces"),
        QStringLiteral("a\ttab"),
        QStringLiteral("   "),
        QStringLiteral("bell\a"),
        QString(67, u'x'),
    };
    for (const QString& text : texts) {
        const std::string encoded = headerText(text);
        EXPECT_THAT(encoded, StartsWith("=?utf-8?")) << text.toStdString();
        EXPECT_EQ(decodedWords(encoded), text);
    }
}

TEST(HeaderText, TheShorterOfTheTwoEncodingsIsTaken) {
    EXPECT_EQ(headerText(QStringLiteral("Größe")), "=?utf-8?B?R3LDtsOfZQ==?=");
    EXPECT_EQ(headerText(QStringLiteral("the report of Zoë")), "=?utf-8?Q?the_report_of_Zo=C3=AB?=");
    EXPECT_EQ(headerText(QStringLiteral("日本")), "=?utf-8?B?5pel5pys?=");
}

TEST(HeaderText, NothingInAWordHasAMeaningBeforeAnAddress) {
    const std::string encoded = headerText(QStringLiteral("Größe_(x)\"y\"=?., <a@b>"));
    EXPECT_EQ(encoded.find_first_of("()\"<>@,.:;[]\\"), std::string::npos) << encoded;
    EXPECT_EQ(decodedWords(encoded), QStringLiteral("Größe_(x)\"y\"=?., <a@b>"));
}

TEST(HeaderText, WordsAreShortEnoughAndHoldWholeCharacters) {
    const std::vector<QString> texts = {
        QStringLiteral("ä").repeated(10'000),          QStringLiteral("\U0001F600").repeated(500),
        QStringLiteral("x\U0001F600y ").repeated(300), QString(10'000, u'x') + u'ä',
        QStringLiteral("日本語の件名 ").repeated(200), QStringLiteral("שלום עולם ").repeated(100),
    };
    for (const QString& text : texts) {
        const std::string encoded = headerText(text);
        EXPECT_EQ(decodedWords(encoded), text);
        for (const std::string& word : wordsIn(encoded)) {
            EXPECT_LE(word.size(), 66U);
            // A word that held a part of a character would show a replacement character.
            EXPECT_FALSE(decodedWords(word).contains(QChar(QChar::ReplacementCharacter))) << word;
        }
    }
}

TEST(HeaderText, ALetterIsNotPartedFromItsMarks) {
    // e with an acute accent and a dot below, a family of three, and a flag.
    for (const QString& letter :
         {QStringLiteral("e\u0301\u0323"), QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467"),
          QStringLiteral("\U0001F1E9\U0001F1EA")}) {
        const QString text = letter.repeated(100);
        const std::string encoded = headerText(text);
        EXPECT_EQ(decodedWords(encoded), text);
        for (const std::string& word : wordsIn(encoded)) {
            const QString part = decodedWords(word);
            EXPECT_EQ(part, letter.repeated(part.size() / letter.size())) << word;
        }
    }
}

TEST(HeaderText, NoWordInBase64ButTheLastIsPadded) {
    // Some readers join the words first and stop at the padding.
    for (const QString& text :
         {QStringLiteral("日本語の件名、とても長いもの").repeated(10),
          QStringLiteral("\U0001F600").repeated(40), QStringLiteral("e\u0301\u0323").repeated(60),
          QStringLiteral("ж").repeated(100)}) {
        const std::vector<std::string> words = wordsIn(headerText(text));
        ASSERT_GT(words.size(), 2U);
        for (const std::string& word : words) {
            EXPECT_FALSE(word.ends_with("=?=") && &word != &words.back()) << word;
        }
    }
}

TEST(HeaderText, WordsInQEndBehindASpaceWhereThereIsOne) {
    // Python shows a space between the words of a long name.
    const std::vector<std::string> words =
        wordsIn(headerText(QStringLiteral("Universitätsbibliothek der Hochschule für Kunst und Gestaltung")));
    ASSERT_GT(words.size(), 1U);
    EXPECT_THAT(words[0], testing::EndsWith("_?="));
}

TEST(HeaderText, MoreMarksThanAWordHoldsAreCutBetweenThem) {
    const QString text = u'a' + QString(500, QChar(0x0301));
    const std::string encoded = headerText(text);
    EXPECT_EQ(decodedWords(encoded), text);
    for (const std::string& word : wordsIn(encoded)) {
        EXPECT_LE(word.size(), 75U);
        EXPECT_FALSE(decodedWords(word).contains(QChar(QChar::ReplacementCharacter)));
    }
}

TEST(HeaderText, HalvesOfSurrogatePairsBecomeReplacementCharacters) {
    const char16_t halves[] = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D, 0xDE00, 0xD83D};
    const QString text = QString::fromUtf16(halves, 7);
    EXPECT_EQ(decodedWords(headerText(text)), QStringLiteral("a\uFFFDb\uFFFD\U0001F600\uFFFD"));
}

TEST(ExtendedParameter, AShortNameIsOneSection) {
    EXPECT_THAT(extendedParameter("filename", QStringLiteral("résumé.pdf")),
                ElementsAre(" filename*=utf-8''r%C3%A9sum%C3%A9.pdf"));
    EXPECT_THAT(extendedParameter("filename", QStringLiteral("a b'c\"%;*().txt")),
                ElementsAre(" filename*=utf-8''a%20b%27c%22%25%3B%2A%28%29.txt"));
    EXPECT_THAT(extendedParameter("filename", QString()), ElementsAre(" filename*=utf-8''"));
}

TEST(ExtendedParameter, ALongNameIsCutBetweenCharactersIntoNumberedSections) {
    const std::vector<std::string> units =
        extendedParameter("filename", QStringLiteral("ö").repeated(40) + QStringLiteral(".txt"));
    ASSERT_GT(units.size(), 3U);
    EXPECT_THAT(units[0], StartsWith(" filename*0*=utf-8''%C3%B6"));
    EXPECT_THAT(units[1], StartsWith(" filename*1*=%C3%B6"));
    EXPECT_THAT(units.back(), HasSubstr(".txt"));
    for (const std::string& unit : units) {
        EXPECT_LE(unit.size(), 76U);
        EXPECT_EQ(unit.ends_with(';'), &unit != &units.back());
    }
}
} // namespace
