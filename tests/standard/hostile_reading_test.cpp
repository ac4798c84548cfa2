// Messages that are slow or large for a careless reader.

#include "tests/standard/read_mail.h"
#include "tests/support/sanitizer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <sys/resource.h>

namespace {
/** The sanitizers make everything many times slower. */
constexpr std::size_t kLongText = support::kSanitized ? 300'000 : 3'000'000;

std::string repeated(const std::string& piece, std::size_t times) {
    std::string text;
    for (std::size_t number = 0; number < (support::kSanitized ? times / 10 : times); ++number) {
        text += piece;
    }
    return text;
}

std::string nested(int depth) {
    std::string text;
    for (int level = 0; level < depth; ++level) {
        const std::string boundary = "b" + std::to_string(level);
        text += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
    }
    return text + "\ninside\n";
}

struct HostileCase {
    const char* name;
    std::function<std::string()> message;
};

class HostileMail : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileMail, TakesTimeInProportion) {
    const std::string message = GetParam().message();
    const auto start = std::chrono::steady_clock::now();
    const support::ReadMail mail = support::readMail(message);
    EXPECT_LT(mail.message.text.size(), 3 * message.size() + 1'000);
    // Less than a second on an idle computer; what is not in proportion takes minutes.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\n\n";

const HostileCase kHostileCases[] = {
    {"DeepMultiparts", [] { return nested(support::kSanitized ? 5'000 : 50'000); }},
    {"ManyParts", [] { return kMixed + repeated("--b\n\n", 1'000'000); }},
    {"ManyPartsWithTexts", [] { return kMixed + repeated("--b\n\nx\n", 200'000); }},
    {"ManyLinesOfHyphens", [] { return kMixed + repeated("--\n", 2'000'000); }},
    {"ManyAlmostBoundaries", [] { return kMixed + repeated("--bx\n", 1'000'000); }},
    {"LongHeader", [] { return "Subject: x\n" + repeated("X: y\n", 400'000) + "\ntext\n"; }},
    {"LongFoldedField", [] { return "Subject: x\n" + repeated(" y\n", 400'000) + "\ntext\n"; }},
    {"OneLongLine", [] { return "Subject: x\n\n" + std::string(kLongText, 'x'); }},
    {"NothingButLineEnds", [] { return "Subject: x\n\n" + std::string(kLongText, '\n'); }},
    {"LongFieldOfAddresses", [] { return "From: " + repeated("a@b,", 500'000) + "\n\ntext\n"; }},
    {"LongFieldOfComments", [] { return "From: " + repeated("(", 500'000) + "\n\ntext\n"; }},
    {"LongFieldOfReferences", [] { return "References: " + repeated("<", 500'000) + "\n\ntext\n"; }},
    {"LongFieldOfEncodedWords",
     [] { return "Subject: " + repeated("=?utf-8?Q?=C3?= ", 200'000) + "\n\ntext\n"; }},
    {"Base64OfPadding", [] { return "Content-Transfer-Encoding: base64\n\n" + repeated("Q===\n", 500'000); }},
    {"NulBytes", [] { return "Subject: x\n\n" + std::string(kLongText, '\0'); }},
    {"FlowedLines",
     [] { return "Content-Type: text/plain; format=flowed\n\n" + repeated("> \n>> \n", 300'000); }},
};

INSTANTIATE_TEST_SUITE_P(Messages, HostileMail, testing::ValuesIn(kHostileCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(HostileMail, HasItsLastPartsInOne) {
    std::string message = kMixed;
    for (int number = 0; number < 20'000; ++number) {
        message += "--b\nContent-Type: image/png\n\nx\n";
    }
    const support::ReadMail mail = support::readMail(message);
    EXPECT_EQ(mail.message.attachments.size(), 10'000U);
    EXPECT_GT(mail.message.attachments.back().bytes, 10'000);
}

TEST(HostileMail, IsReadToADepthOfAHundred) {
    EXPECT_EQ(support::readMail(nested(100)).message.text, "inside\r\n");
    EXPECT_NE(support::readMail(nested(102)).message.text, "inside\r\n");
}
} // namespace
