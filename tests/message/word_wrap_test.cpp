#include "message/word_wrap.h"
#include "platform/runtime_error.h"
#include "tests/support/recording_printer.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using support::PrintedDocument;
using support::RecordingPrinter;
using testing::Each;
using testing::SizeIs;

/** The document printed on lines of 20 units: 12 of them can be filled, 8 are the margin. */
PrintedDocument printed(const QString& text) {
    PrintedDocument document;
    RecordingPrinter printer(document);
    printText(printer, text);
    return document;
}

struct Split {
    const char* name;
    QStringView text;
    QStringView delimiter;
    QStringView word;
    QStringView rest;
};

class WordSplitter : public testing::TestWithParam<Split> {};

TEST_P(WordSplitter, TakesTheFirstWordAndLeavesTheRest) {
    QStringView text = GetParam().text;
    EXPECT_EQ(takeWord(text, GetParam().delimiter), GetParam().word);
    EXPECT_EQ(text, GetParam().rest);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WordSplitter,
    testing::Values(Split{"TwoWords", u"one two", u" ", u"one", u"two"},
                    Split{"OneWord", u"one", u" ", u"one", u""}, Split{"NothingAtAll", u"", u" ", u"", u""},
                    Split{"ABlankAtTheBeginning", u" one", u" ", u"", u"one"},
                    Split{"ABlankAtTheEnd", u"one ", u" ", u"one", u""},
                    Split{"TwoBlanks", u"one  two", u" ", u"one", u" two"},
                    Split{"OfALongerDelimiterOnlyTheFirstCharacterGoes", u"one--two", u"--", u"one", u"-two"},
                    Split{"AnEmptyDelimiterStandsBeforeTheFirstCharacter", u"one", u"", u"", u"ne"},
                    Split{"AnEmptyDelimiterInAnEmptyText", u"", u"", u"", u""}),
    [](const auto& test) { return std::string(test.param.name); });

struct Layout {
    const char* name;
    QString text;
    std::vector<std::string> lines;
};

class PrintText : public testing::TestWithParam<Layout> {};

TEST_P(PrintText, BreaksTheLines) {
    const PrintedDocument document = printed(GetParam().text);
    EXPECT_EQ(document.lines, GetParam().lines);
    EXPECT_EQ(document.rest, "");
    EXPECT_EQ(document.documentEnds, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, PrintText,
    testing::Values(Layout{"OneWord", QStringLiteral("one"), {"one "}},
                    Layout{"SeveralWordsOnALine", QStringLiteral("one two three"), {"one two ", "three "}},
                    Layout{
                        "AWordThatEndsAtTheMarginStays", QStringLiteral("one two four"), {"one two four "}},
                    Layout{"AWordThatReachesIntoTheMarginGoesToTheNextLine",
                           QStringLiteral("one two seven"),
                           {"one two ", "seven "}},
                    Layout{"OnlySingleBlanksSplitWords", QStringLiteral("one  two"), {"one  two "}},
                    Layout{"ABlankAtTheBeginningIsAnEmptyWord", QStringLiteral(" one"), {" one "}},
                    Layout{"ABlankAtTheEndAddsNone", QStringLiteral("one "), {"one "}},
                    Layout{"BlanksAloneBreakTheLineToo",
                           QString(30, u' '),
                           {std::string(13, ' '), std::string(13, ' '), std::string(4, ' ')}},
                    Layout{"TabsSplitNothing", QStringLiteral("one\ttwo"), {"one\ttwo "}},
                    Layout{"LineBreaksInsideStayInTheWords",
                           QStringLiteral("one\r\ntwo three\nfour\rfive"),
                           {"one\r\ntwo three\nfour\rfive "}},
                    Layout{"ThePositionIsCountedFromTheLastLineBreak",
                           QStringLiteral("seven77\r\na b cd efg hi"),
                           {"seven77\r\na b cd efg ", "hi "}},
                    Layout{"AWordWiderThanTheLineStandsOnALineOfItsOwnAndIsNotCut",
                           QStringLiteral("one abcdefghijklmnopqrstuvwxyz two"),
                           {"one ", "abcdefghijklmnopqrstuvwxyz ", "two "}},
                    Layout{"AWideWordEndsTheLineBeforeItEvenWhereThatIsEmpty",
                           QStringLiteral("abcdefghijklmnopqrstuvwxyz"),
                           {"", "abcdefghijklmnopqrstuvwxyz "}},
                    Layout{"AnEmptyMessagePrintsOneEmptyLineAndEndsTheDocument", QString(), {""}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(PrintText, IsPrintedInArial) {
    const PrintedDocument document = printed(QStringLiteral("one"));
    EXPECT_EQ(document.font, "Arial");
    EXPECT_EQ(document.fontSize, 9.75);
}

TEST(PrintText, EveryWordOfALongTextIsPrintedOnce) {
    QString text;
    constexpr int words = support::kSanitized ? 100'000 : 1'000'000;
    for (int word = 0; word < words; ++word) {
        text += QStringLiteral("word ");
    }
    const PrintedDocument document = printed(text);
    EXPECT_EQ(document.printCalls, 2 * words);
    EXPECT_THAT(document.lines, SizeIs(words / 2));
    EXPECT_THAT(document.lines, Each(std::string("word word ")));
}

TEST(PrintText, AFailureOfThePrinterEndsTheRoutine) {
    class FailingPrinter : public RecordingPrinter {
      public:
        using RecordingPrinter::RecordingPrinter;

        void endLine() override { throw platform::RuntimeError(platform::errors::PrinterError); }
    };

    PrintedDocument document;
    FailingPrinter printer(document);
    EXPECT_EQ(platform::errorNumberOf([&printer] { printText(printer, u"one two seven eight"); }), 482);
    EXPECT_EQ(document.rest, "one two ");
    EXPECT_EQ(document.documentEnds, 0);
}

} // namespace
