// Messages of every difficult shape: generated ones, compared with the plain rules, and hostile ones by name.

#include "tests/support/generated_message.h"
#include "tests/support/opened_message.h"
#include "tests/support/pieces.h"
#include "tests/support/reference_parser.h"
#include "tests/support/sanitizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

using support::differenceBetween;
using support::opened;
using support::OpenedMessage;
using support::openedWithoutDecoding;
using testing::IsEmpty;

namespace {
using namespace std::string_view_literals;

constexpr unsigned kGenerated = support::fewerIfSanitized(600U, 3U);
constexpr std::size_t kAtOnce = std::string_view::npos;

std::string withBoundary(const std::string& parameter, const std::string& body) {
    return "From: a@example.org\r\nSubject: s\r\nContent-Type: multipart/mixed; " + parameter + "\r\n\r\n" +
           body;
}

std::string plain(const std::string& text) {
    return "Content-Type: text/plain; x\r\n\r\n" + text + "\r\n";
}

std::string file(const std::string& name, const std::string& encoded) {
    return "Content-Type: image/png; name=" + name + "\r\n\r\n" + encoded + "\r\n";
}

std::string bodyOf(const std::vector<std::string>& parts, const std::string& boundary) {
    std::string body;
    for (const std::string& part : parts) {
        body.append("--").append(boundary).append("\r\n").append(part);
    }
    return body + "--" + boundary + "--\r\n";
}

/** A message of parts between boundary lines. */
std::string mixed(const std::vector<std::string>& parts, const std::string& boundary = "cut") {
    return withBoundary("boundary=\"" + boundary + '"', bodyOf(parts, boundary));
}

std::string alternative(const std::string& parameter, const std::string& body) {
    return "Content-Type: multipart/alternative; " + parameter + "\r\n\r\n" + body;
}

struct HostileShape {
    const char* name;
    std::string message;
    int error = 0;
    std::string text;
    std::vector<std::string> attachmentNames;
};

void PrintTo(const HostileShape& shape, std::ostream* stream) {
    *stream << shape.name;
}

class HostileMessage : public testing::TestWithParam<HostileShape> {};

std::vector<std::string> namesIn(const OpenedMessage& message) {
    std::vector<std::string> names;
    for (const support::DecodedAttachment& attachment : message.attachments) {
        names.push_back(attachment.name);
    }
    return names;
}

std::vector<std::string> numberedFiles(int count) {
    std::vector<std::string> parts;
    for (int number = 1; number <= count; ++number) {
        parts.push_back(file('"' + std::to_string(number) + '"', "QQ=="));
    }
    return parts;
}

std::vector<std::string> numbersTo(int count) {
    std::vector<std::string> numbers;
    for (int number = 1; number <= count; ++number) {
        numbers.push_back(std::to_string(number));
    }
    return numbers;
}

const std::string kLongBoundary(10'000, 'b');
const std::string kStrangeBytes = std::string("\0\x01\x1b$B%F%9%H\x1b(B \xff\xfe \xed\xa0\x80 gr\xfc"sv);

const HostileShape kHostileShapes[] = {
    {"BoundaryWithoutQuotes", withBoundary("boundary=cut", bodyOf({plain("x")}, "cut")), 5, "", {}},
    {"BoundaryWithoutItsClosingQuote",
     withBoundary("boundary=\"cut", bodyOf({plain("x")}, "cut")),
     5,
     "",
     {}},
    {"BoundaryTakenFromALaterParameter",
     withBoundary("boundary=cut; type=\"later\"", bodyOf({plain("x")}, "later")),
     0,
     "\r\nx\r\n--",
     {}},
    {"EmptyBoundaryIsNone", withBoundary("boundary=\"\"", bodyOf({plain("x")}, "cut")), 0, "", {}},
    {"BoundaryOfTenThousandCharacters", mixed({plain("x")}, kLongBoundary), 0, "\r\nx\r\n--", {}},
    {"BoundaryThatBeginsAnother",
     withBoundary("boundary=\"cut\"",
                  "--cut\r\n" + plain("one") + "--cut1\r\n" + plain("two") + "--cut--\r\n"),
     0,
     "\r\none\r\n--\r\n\r\ntwo\r\n--",
     {}},
    {"BoundaryThatStandsInTheText", mixed({plain("a cut above")}), 5, "\r\na ", {}},
    {"NoFinalBoundary", withBoundary("boundary=\"cut\"", "--cut\r\n" + plain("one")), 0, "", {}},
    {"NameWithoutQuotes", mixed({file("a", "QQ==")}), 5, "", {}},
    {"NameWithoutItsClosingQuote", mixed({file("\"a", "QQ==")}), 5, "", {}},
    {"NameWithoutQuotesBehindAQuotedParameter",
     mixed({"Content-Type: image/png; charset=\"x\"; name=a.png\r\n\r\nQQ==\r\n"}),
     5,
     "",
     {}},
    {"EmptyName", mixed({file("\"\"", "QQ==")}), 0, "", {""}},
    {"NoNameAtAll", mixed({"Content-Type: image/png; x\r\n\r\nQQ==\r\n"}), 5, "", {}},
    {"TwentyOneParts", mixed(numberedFiles(21)), 0, "", numbersTo(20)},
    {"NameInRunningText", mixed({plain("his name= was\r\nlast")}), 0, "last\r\n--", {}},
    {"LowerCaseHeaders", mixed({"content-type: text/plain; x\r\n\r\nx\r\n"}), 0, "", {}},
    {"FileTypeCarriedOver", mixed({file("\"a\"", "QQ=="), "\r\nname=\"b\"\r\n"}), 0, "", {"a", "b"}},
    {"TextTypeCarriedOver", mixed({plain("x"), "\r\ny\r\n"}), 5, "\r\nx\r\n--", {}},
    {"AlternativeInAnAlternative",
     mixed({alternative(
         "boundary=\"X1\"",
         bodyOf({alternative("boundary=\"Y1\"", bodyOf({plain("deep")}, "Y1")), plain("inner")}, "X1"))}),
     0,
     "\r\ninner\r\n--",
     {}},
    {"AlternativeWithoutQuotes", mixed({plain("x"), alternative("boundary=in", "")}), 5, "\r\nx\r\n--", {}},
    {"AlternativeWithAnEmptyBoundary",
     mixed({alternative("boundary=\"\"", ""), plain("x")}),
     0,
     "\r\nx\r\n--",
     {}},
    {"AlternativeWithTheBoundaryAroundIt",
     mixed({alternative("boundary=\"cut\"", bodyOf({plain("x")}, "cut"))}),
     5,
     "",
     {}},
    {"AlternativeWithATextTypeCarriedOver",
     mixed({alternative("boundary=\"X1\"", bodyOf({plain("x"), "\r\ny\r\n"}, "X1"))}),
     5,
     "\r\nx\r\n--",
     {}},
    {"BytesOfAnyKind", mixed({plain(kStrangeBytes)}), 0, "\r\n" + kStrangeBytes + "\r\n--", {}},
};

/** Work in linear time stays far below this limit; anything worse goes far beyond it. */
constexpr std::chrono::seconds kLinear{20};
} // namespace

class GeneratedMessages : public testing::TestWithParam<unsigned> {};

TEST_P(GeneratedMessages, ComeToWhatThePlainRulesSayHoweverTheyAreCut) {
    constexpr unsigned perTest = 50;
    for (unsigned seed = GetParam() * perTest; seed < (GetParam() + 1) * perTest; ++seed) {
        const std::string message = support::generatedMessage(seed);
        const OpenedMessage expected = support::reference::opened(message);
        for (const std::size_t pieceBytes : support::kPieceSizes) {
            ASSERT_EQ(differenceBetween(opened(message, pieceBytes), expected), "")
                << "message " << seed << " in pieces of " << pieceBytes << '\n'
                << message;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(InFifties, GeneratedMessages, testing::Range(0U, kGenerated / 50));

TEST(GeneratedMessagesInAll, AreOfEveryKind) {
    unsigned failed = 0;
    unsigned withText = 0;
    unsigned withAttachment = 0;
    unsigned saved = 0;
    unsigned cutShort = 0;
    unsigned withoutBoundary = 0;
    for (unsigned seed = 0; seed < kGenerated; ++seed) {
        const OpenedMessage message = opened(support::generatedMessage(seed), kAtOnce);
        failed += message.error != 0 ? 1 : 0;
        withText += message.text.empty() ? 0 : 1;
        withAttachment += message.attachments.empty() ? 0 : 1;
        withoutBoundary += message.summary.Boundary.empty() ? 1 : 0;
        const auto& attachments = message.attachments;
        saved += std::any_of(attachments.begin(), attachments.end(),
                             [](const auto& attachment) { return !attachment.content.empty(); })
                     ? 1
                     : 0;
        cutShort += std::any_of(attachments.begin(), attachments.end(),
                                [](const auto& attachment) { return attachment.error != 0; })
                        ? 1
                        : 0;
    }
    for (const unsigned count : {failed, withText, withAttachment, saved, cutShort, withoutBoundary}) {
        EXPECT_GT(count, kGenerated / 20);
        EXPECT_LT(count, kGenerated);
    }
}

TEST_P(HostileMessage, ComesToItsDocumentedResult) {
    const HostileShape& shape = GetParam();
    const OpenedMessage message = opened(shape.message, kAtOnce);
    EXPECT_EQ(message.error, shape.error);
    EXPECT_EQ(message.text, shape.text);
    EXPECT_EQ(namesIn(message), shape.attachmentNames);
    EXPECT_EQ(differenceBetween(message, support::reference::opened(shape.message)), "");
    EXPECT_EQ(differenceBetween(message, opened(shape.message, 1)), "");
}

INSTANTIATE_TEST_SUITE_P(Shapes, HostileMessage, testing::ValuesIn(kHostileShapes),
                         [](const auto& test) { return std::string(test.param.name); });

constexpr unsigned kManyParts = support::fewerIfSanitized(200'000U, 8U);

TEST(LargeMessage, OneLongLineIsTakenWholeInLinearTime) {
    for (const std::string key : {"x", "name=", "Content-Type", "\"", "cu"}) {
        std::string line;
        while (line.size() < support::fewerIfSanitized(5'000'000U, 4U)) {
            line += key;
        }
        const auto start = std::chrono::steady_clock::now();
        const OpenedMessage message = openedWithoutDecoding(mixed({plain("first\r\n" + line + "\r\nlast")}));
        EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear) << key;
        EXPECT_EQ(message.error, 0) << key;
        // Besides the part's own header, the stripper's passes cut only at a key in the long line.
        const bool cuts = key == "name=" || key == "Content-Type";
        EXPECT_TRUE(message.text == (cuts ? "last\r\n--" : "\r\nfirst\r\n" + line + "\r\nlast\r\n--")) << key;
    }
}

TEST(LargeMessage, OfManyPartsTheFirstTwentyCountAndTheRestCostsNothing) {
    std::vector<std::string> parts = numberedFiles(kManyParts);
    const std::string raw = mixed(parts);
    const auto start = std::chrono::steady_clock::now();
    const OpenedMessage message = openedWithoutDecoding(raw);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear);
    EXPECT_EQ(message.error, 0);
    EXPECT_EQ(namesIn(message), numbersTo(20));
}

TEST(LargeMessage, ManyPartsWithinAnAlternativeCostNoMore) {
    const std::vector<std::string> parts(kManyParts, plain("x"));
    const std::string raw = mixed({alternative("boundary=\"X1\"", bodyOf(parts, "X1"))});
    const auto start = std::chrono::steady_clock::now();
    const OpenedMessage message = openedWithoutDecoding(raw);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear);
    EXPECT_EQ(message.error, 0);
    EXPECT_EQ(message.text, "\r\nx\r\n--");
}

TEST(LargeMessage, ABoundaryThatNearlyStandsEverywhereIsLookedForInLinearTime) {
    const std::string boundary = std::string(100'000, 'b') + "e";
    const std::string raw = mixed({plain(std::string(5'000'000, 'b'))}, boundary);
    const auto start = std::chrono::steady_clock::now();
    const OpenedMessage message = openedWithoutDecoding(raw);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear);
    EXPECT_EQ(message.error, 0);
    EXPECT_EQ(message.text.size(), 5'000'000U + 6U);
}

TEST(LargeMessage, TwentyLongTextsWithoutALineEndAreStrippedInLinearTime) {
    // A key without a line feed behind it is not cut away, so every part's pass could find it again.
    const std::vector<std::string> parts(20,
                                         "Content-Type: text/plain; x\r\nname=" + std::string(250'000, 'n'));
    const std::string raw = mixed(parts);
    const auto start = std::chrono::steady_clock::now();
    const OpenedMessage message = openedWithoutDecoding(raw);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear);
    EXPECT_EQ(message.error, 0);
    EXPECT_THAT(message.attachments, IsEmpty());
    EXPECT_TRUE(message.text.ends_with(std::string(250'000, 'n') + "--"));
}

TEST(LargeMessage, ABoundaryParameterOnAHundredThousandFoldedLinesIsFoundInLinearTime) {
    std::string header = "Content-Type: multipart/mixed;\r\n";
    for (int number = 0; number < 100'000; ++number) {
        header += " p" + std::to_string(number) + "=v;\r\n";
    }
    const std::string raw = header + " boundary=\"cut\"\r\n\r\n" + bodyOf({plain("x")}, "cut");
    const auto start = std::chrono::steady_clock::now();
    const OpenedMessage message = openedWithoutDecoding(raw);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kLinear);
    EXPECT_EQ(message.error, 0);
    EXPECT_EQ(message.text, "\r\nx\r\n--");
}
