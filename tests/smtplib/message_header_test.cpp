#include "components/smtplib/message_header.h"
#include "tests/smtplib/header_fields.h"

#include <QByteArray>
#include <QLocale>
#include <QTimeZone>
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using smtplib::HeaderFields;
using smtplib::messageHeader;
using smtplib::parseAddressList;
using support::at;
using support::plainFields;
using testing::Each;
using testing::Not;
using testing::ResultOf;

std::vector<std::string> linesOf(std::string_view header) {
    std::vector<std::string> lines;
    while (!header.empty()) {
        const std::size_t end = header.find("\r\n");
        lines.emplace_back(header.substr(0, end));
        header.remove_prefix(end == std::string_view::npos ? header.size() : end + 2);
    }
    return lines;
}

/** The value of a field with its folds undone; "(none)" when there is no such field. */
std::string unfolded(const std::string& header, const std::string& name) {
    std::string value;
    bool inside = false;
    bool found = false;
    for (const std::string& line : linesOf(header)) {
        if (!line.empty() && line.front() != ' ' && line.front() != '\t') {
            inside = line.starts_with(name + ':');
            found = found || inside;
            value += inside ? line.substr(name.size() + 1) : "";
        } else if (inside) {
            value += line;
        }
    }
    return found ? value : "(none)";
}

/** The text with each run of encoded words put back to what it stands for. */
std::string decoded(const std::string& value) {
    const std::string begin = "=?UTF-8?B?";
    std::string text;
    bool afterWord = false;
    for (std::size_t position = 0; position < value.size();) {
        const std::size_t word = value.find(begin, position);
        const std::string between = value.substr(position, word - position);
        text += afterWord && word != std::string::npos && between == " " ? "" : between;
        if (word == std::string::npos) {
            break;
        }
        const std::size_t end = value.find("?=", word + begin.size());
        const std::string bytes = value.substr(word + begin.size(), end - word - begin.size());
        text += QByteArray::fromBase64(QByteArray::fromStdString(bytes)).toStdString();
        position = end + 2;
        afterWord = true;
    }
    return text;
}

std::string headerWithSubject(const std::string& subject) {
    HeaderFields fields = plainFields();
    fields.subject = subject;
    return messageHeader(fields);
}

TEST(MessageHeader, NamesEverythingOnce) {
    HeaderFields fields = plainFields();
    fields.copies = parseAddressList("Carl <carl@example.org>");
    fields.additionalLines = "MIME-Version: 1.0\r\nContent-Type: text/plain;\r\n charset=utf-8\r\n";
    EXPECT_EQ(messageHeader(fields), "From: bob@example.org\r\n"
                                     "To: ann@example.org\r\n"
                                     "Cc: Carl <carl@example.org>\r\n"
                                     "Subject: Hello\r\n"
                                     "Date: Fri, 01 Mar 2024 09:05:07 +0100\r\n"
                                     "Message-ID: <1@example.org>\r\n"
                                     "MIME-Version: 1.0\r\n"
                                     "Content-Type: text/plain;\r\n charset=utf-8\r\n");
}

TEST(MessageHeader, LeavesOutWhatThereIsNot) {
    HeaderFields fields = plainFields();
    fields.copies = std::exchange(fields.recipients, {});
    fields.messageId.clear();
    EXPECT_EQ(messageHeader(fields), "From: bob@example.org\r\n"
                                     "Cc: ann@example.org\r\n"
                                     "Subject: Hello\r\n"
                                     "Date: Fri, 01 Mar 2024 09:05:07 +0100\r\n");
}

TEST(DateText, HasEnglishNamesAndANumericZoneWhateverTheLocale) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    EXPECT_EQ(smtplib::dateText(at({2024, 12, 31}, {23, 59, 0}, 0)), "Tue, 31 Dec 2024 23:59:00 +0000");
    EXPECT_EQ(smtplib::dateText(at({2024, 5, 5}, {0, 0, 9}, 20700)), "Sun, 05 May 2024 00:00:09 +0545");
    EXPECT_EQ(smtplib::dateText(at({2024, 5, 5}, {0, 0, 9}, -12600)), "Sun, 05 May 2024 00:00:09 -0330");
    QLocale::setDefault(before);
}

TEST(DateText, ALocalTimeHasItsOwnZone) {
    const QDateTime summer({2024, 7, 1}, {12, 0}, QTimeZone("Europe/Berlin"));
    EXPECT_EQ(smtplib::dateText(summer), "Mon, 01 Jul 2024 12:00:00 +0200");
}

struct Subject {
    const char* name;
    std::string typed;
    /** The value as it stands in the header, unfolded, without the space behind the colon. */
    std::string value;
};

class SubjectLine : public testing::TestWithParam<Subject> {};

TEST_P(SubjectLine, IsWrittenSoThatItComesBack) {
    const std::string value = unfolded(headerWithSubject(GetParam().typed), "Subject");
    EXPECT_EQ(value, GetParam().typed.empty() ? "" : ' ' + GetParam().value);
    EXPECT_EQ(decoded(value), GetParam().typed.empty() ? "" : ' ' + GetParam().typed);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SubjectLine,
    testing::Values(Subject{"Empty", "", ""}, Subject{"Plain", "Hello", "Hello"},
                    Subject{"OnlyBlanks", "   ", "   "}, Subject{"BlanksAround", " a  b\tc ", " a  b\tc "},
                    Subject{"Signs", "a: \"b\" <c> (d), e; =f?", "a: \"b\" <c> (d), e; =f?"},
                    Subject{"BeyondAscii",
                            "Gr\xc3\xbc\xc3\x9f"
                            "e",
                            "=?UTF-8?B?R3LDvMOfZQ==?="},
                    Subject{"Escape", "\x1b[1m", "=?UTF-8?B?G1sxbQ==?="},
                    Subject{"Delete", "a\x7f", "=?UTF-8?B?YX8=?="}),
    [](const auto& test) { return test.param.name; });

TEST(MessageHeader, AnEncodedWordFromAnotherMessageStaysWhatItIs) {
    const std::string value = unfolded(headerWithSubject("Re: =?iso-8859-1?q?Gr=FC=DFe?="), "Subject");
    EXPECT_EQ(value, " Re: =?iso-8859-1?q?Gr=FC=DFe?=");
}

TEST(MessageHeader, BytesThatAreNoUtf8AreReadAsTheyWouldBeShown) {
    const std::string value = unfolded(headerWithSubject("Gr\xfc\xdf"
                                                         "e"),
                                       "Subject");
    EXPECT_EQ(decoded(value), " Gr\xc3\xbc\xc3\x9f"
                              "e");
}

std::size_t size(const std::string& line) {
    return line.size();
}

std::string visible(const std::string& line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

TEST(MessageHeader, LongTextIsFoldedAtSpacesOnly) {
    std::string subject;
    for (int word = 0; word < 200; ++word) {
        subject += std::string(static_cast<std::size_t>(word % 20), 'x') + (word % 7 == 0 ? " \t " : " ");
    }
    const std::string header = headerWithSubject(subject);
    const auto lines = linesOf(header);
    EXPECT_EQ(unfolded(header, "Subject"), ' ' + subject);
    EXPECT_THAT(lines, Each(ResultOf(size, testing::Le(76U))));
    EXPECT_THAT(lines, Each(ResultOf(visible, Not("")))) << "a line of blanks may end the header";
}

TEST(MessageHeader, AWordThatNoLineCouldHoldIsEncoded) {
    for (const std::size_t characters : {900U, 901U, 100'000U}) {
        const std::string subject = std::string(characters, 'x') + " y";
        const std::string header = headerWithSubject(subject);
        EXPECT_THAT(linesOf(header), Each(ResultOf(size, testing::Le(998U))));
        EXPECT_EQ(decoded(unfolded(header, "Subject")), ' ' + subject);
    }
    const std::string spaces(2000, ' ');
    EXPECT_EQ(decoded(unfolded(headerWithSubject(spaces), "Subject")), ' ' + spaces);
}

/** The bytes of each encoded word on the line, decoded. */
std::vector<std::string> encodedWordsOf(const std::vector<std::string>& lines) {
    std::vector<std::string> words;
    for (const std::string& line : lines) {
        for (std::size_t word = line.find("=?"); word != std::string::npos;) {
            const std::size_t end = line.find("?=", word + 10) + 2;
            EXPECT_LE(end - word, 75U);
            EXPECT_LE(line.size(), 76U);
            words.push_back(decoded(line.substr(word, end - word)));
            word = line.find("=?", end);
        }
    }
    return words;
}

bool isUtf8(const std::string& bytes) {
    return QString::fromUtf8(bytes).toUtf8().toStdString() == bytes;
}

TEST(MessageHeader, NoEncodedWordIsTooLongOrEndsInsideACharacter) {
    for (std::size_t shift = 0; shift < 5; ++shift) {
        std::string text(shift, 'x');
        for (int time = 0; time < 100; ++time) {
            text += "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80 ";
        }
        HeaderFields fields = plainFields();
        fields.subject = text;
        fields.recipients = {{text, true, "ann", "example.org"}};
        const std::string header = messageHeader(fields);
        const std::vector<std::string> words = encodedWordsOf(linesOf(header));
        EXPECT_GT(words.size(), 20U);
        EXPECT_THAT(words, Each(ResultOf(isUtf8, true)));
        EXPECT_EQ(decoded(unfolded(header, "Subject")), ' ' + text);
        EXPECT_EQ(decoded(unfolded(header, "To")), ' ' + text + " <ann@example.org>");
    }
}

struct Name {
    const char* name;
    std::string typed;
    std::string written;
};

class DisplayName : public testing::TestWithParam<Name> {};

TEST_P(DisplayName, IsWrittenSoThatItMeansTheSame) {
    HeaderFields fields = plainFields();
    fields.recipients = parseAddressList(GetParam().typed + " <ann@example.org>");
    EXPECT_EQ(unfolded(messageHeader(fields), "To"), ' ' + GetParam().written + "<ann@example.org>");
}

INSTANTIATE_TEST_SUITE_P(
    Names, DisplayName,
    testing::Values(Name{"Atoms", "Ann  O'Neil", "Ann O'Neil "},
                    Name{"Dot", "Ann B. Miller", "\"Ann B. Miller\" "},
                    Name{"Quoted", R"("Miller, Ann")", R"("Miller, Ann" )"},
                    Name{"QuotedWithoutNeed", R"("Ann")", R"("Ann" )"},
                    Name{"QuotesInside", R"("A \"B\" \\ C")", R"("A \"B\" \\ C" )"},
                    Name{"QuotedTextThatLooksEncoded", R"("=?utf-8?q?a?=")", R"("=?utf-8?q?a?=" )"},
                    Name{"EncodedWord", "=?utf-8?q?J=C3=B6rg?= Bach", "=?utf-8?q?J=C3=B6rg?= Bach "},
                    Name{"BeyondAscii", "J\xc3\xb6rg", "=?UTF-8?B?SsO2cmc=?= "},
                    Name{"QuotedBeyondAscii", "\"Bach, J\xc3\xb6rg\"", "=?UTF-8?B?QmFjaCwgSsO2cmc=?= "}),
    [](const auto& test) { return test.param.name; });

TEST(MessageHeader, LongListsFoldBehindCommas) {
    std::string typed;
    for (int number = 0; number < 1000; ++number) {
        typed +=
            "\"Name, " + std::to_string(number) + "\" <user" + std::to_string(number) + "@example.org>, ";
    }
    HeaderFields fields = plainFields();
    fields.recipients = parseAddressList(typed);
    const std::string header = messageHeader(fields);
    EXPECT_EQ(parseAddressList(unfolded(header, "To")), fields.recipients);
    std::size_t folded = 0;
    for (const std::string& line : linesOf(header)) {
        EXPECT_LE(line.size(), 76U);
        if (line.starts_with(" \"Name") && !line.ends_with("999@example.org>")) {
            ++folded;
            EXPECT_TRUE(line.ends_with(',')) << line;
        }
    }
    EXPECT_GT(folded, 400U);
}

TEST(MessageHeader, TheLongestAddressFitsIntoItsLine) {
    const std::string label = std::string(61, 'x') + '.';
    const std::string mailbox = "ab@" + label + label + label + label + "abc";
    HeaderFields fields = plainFields();
    fields.recipients = parseAddressList("a@x.org, " + std::string(150, 'n') + " <" + mailbox + ">, b@x.org");
    const std::string header = messageHeader(fields);
    EXPECT_THAT(linesOf(header), Each(ResultOf(size, testing::Le(998U))));
    EXPECT_EQ(parseAddressList(unfolded(header, "To")), fields.recipients);
}

} // namespace
