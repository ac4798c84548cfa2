#include "doctor/message_findings.h"
#include "tests/doctor/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {
using doctor::Finding;
using doctor::Grade;
using doctor::MessageSeen;
using support::findingOf;
using support::findingWith;
using testing::IsEmpty;

constexpr const char* kFrom = "Ann <ann@example.org>";

/** A message with further header lines, each a name and a value. */
MessageSeen seen(const std::vector<std::pair<std::string, std::string>>& fields, const std::string& body) {
    MessageSeen message;
    message.number = 7;
    message.header = {{"From", kFrom}, {"Subject", "hello"}, {"Date", "Mon, 2 Mar 2026 10:00:00 +0000"}};
    for (const auto& [field, value] : fields) {
        message.header.push_back({field, value});
    }
    for (poplib::HeaderLine& line : message.header) {
        line.separator = ": ";
    }
    message.body = body;
    message.size = static_cast<std::int32_t>(body.size()) + 100;
    message.isWhole = true;
    return message;
}

MessageSeen multipart(const std::string& body) {
    return seen({{"Content-Type", "multipart/mixed; boundary=\"cut here\""}}, body);
}

std::string part(const std::string& type, const std::string& rest) {
    return "--cut here\r\nContent-Type: " + type + "\r\n" + rest + "\r\n";
}

constexpr const char* kEnd = "--cut here--\r\n";

std::vector<Finding> houseFindings(const MessageSeen& message) {
    return findingsOf(message, MailMode::House);
}

TEST(DoctorsMessages, AnOrdinaryOnePuzzlesNobody) {
    EXPECT_THAT(houseFindings(seen({}, "Hello Bob,\r\nsee you at 5 = five.\r\n")), IsEmpty());
    EXPECT_THAT(
        houseFindings(multipart(
            part("text/plain; charset=utf-8", "\r\nSee the file.") +
            part("application/pdf; name=\"a.pdf\"", "Content-Transfer-Encoding: base64\r\n\r\nQUJD") + kEnd)),
        IsEmpty());
}

TEST(DoctorsMessages, ABoundaryWithoutQuotesEndsTheLogInWithError5) {
    const auto findings = houseFindings(seen({{"Content-Type", "multipart/mixed; boundary=abc"}}, "x\r\n"));
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].grade, Grade::Stops);
    EXPECT_EQ(findings[0].number, 5);
    EXPECT_EQ(findings[0].box, QStringLiteral("Error 5 Please start program again "));
    EXPECT_EQ(findings[0].message, 7);
    EXPECT_EQ(findings[0].from, QString::fromUtf8(kFrom));
    EXPECT_EQ(findings[0].subject, QStringLiteral("hello"));
    EXPECT_EQ(findings[0].size, 103);
    EXPECT_TRUE(findings[0].advice.contains(QStringLiteral("--mail=standard")));
}

TEST(DoctorsMessages, InTheStandardWayAMessageWithoutTextIsFoundEmpty) {
    MessageSeen message = seen({}, "\r\n");
    message.header[1].value = "=?utf-8?Q?Gr=C3=BC=C3=9Fe?=";
    const auto nothing = findingsOf(message, MailMode::Standard);
    ASSERT_EQ(nothing.size(), 1U);
    EXPECT_EQ(nothing[0].grade, Grade::Met);
    EXPECT_EQ(nothing[0].subject, QStringLiteral("Grüße"));
    EXPECT_TRUE(nothing[0].text.startsWith(QStringLiteral("It opens empty: there is no text")));
    const auto attached =
        findingsOf(seen({{"Content-Type", "application/pdf; name=a.pdf"}}, "%PDF\r\n"), MailMode::Standard);
    ASSERT_EQ(attached.size(), 1U);
    EXPECT_TRUE(attached[0].text.endsWith(QStringLiteral("all that it has is attached.")));
}

TEST(DoctorsMessages, InTheStandardWayAPartThatCannotBeDecodedIsFound) {
    const auto found = findingsOf(
        seen({{"Content-Type", "text/plain"}, {"Content-Transfer-Encoding", "x-unknown"}}, "gibberish\r\n"),
        MailMode::Standard);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(found[0].text.startsWith(QStringLiteral("A part of it cannot be decoded")));
}

TEST(DoctorsMessages, InTheStandardWayNoneOfTheseMatters) {
    EXPECT_THAT(
        findingsOf(seen({{"Content-Type", "multipart/mixed; boundary=abc"}}, "x\r\n"), MailMode::Standard),
        IsEmpty());
}

TEST(DoctorsMessages, SenderAndSubjectInEncodedWordsAreShownEncoded) {
    MessageSeen message = seen({}, "text\r\n");
    message.header[1].value = "=?utf-8?Q?Gr=C3=BC=C3=9Fe?=";
    EXPECT_EQ(findingOf("shown encoded", houseFindings(message)).grade, Grade::Met);
}

TEST(DoctorsMessages, WithoutSubjectOrDateTheRowShowsAnApostrophe) {
    MessageSeen message = seen({}, "text\r\n");
    message.header.pop_back();
    EXPECT_FALSE(findingOf("its row shows '", houseFindings(message)).text.isEmpty());
}

TEST(DoctorsMessages, ALongPlainOneOpensEmptyBehindABox) {
    MessageSeen message = seen({}, "text\r\n");
    message.size = 32'001;
    message.isWhole = false;
    const Finding finding = findingOf("32000 bytes", houseFindings(message));
    EXPECT_EQ(finding.grade, Grade::Met);
    EXPECT_EQ(finding.box, QStringLiteral("There was a problem with the message header."));
    message.size = 32'000;
    EXPECT_THAT(houseFindings(message), IsEmpty());
}

TEST(DoctorsMessages, APartThatIsNotAsItShouldBeCannotBeOpened) {
    const auto findings =
        houseFindings(multipart(part("application/pdf;\r\n name=a.pdf", "\r\nQUJD") + kEnd));
    const Finding finding = findingWith(5, findings);
    EXPECT_EQ(finding.grade, Grade::Met);
    EXPECT_EQ(finding.box, QStringLiteral("There is an error in the message header. Error# 5"));
}

TEST(DoctorsMessages, TextOfARelatedPartIsNotShown) {
    const auto findings = houseFindings(
        multipart(part("multipart/related; boundary=\"x\"", "\r\n--x\r\nhidden\r\n--x--") + kEnd));
    EXPECT_EQ(findingOf("opens empty", findings).grade, Grade::Met);
}

TEST(DoctorsMessages, EncodedTextIsShownEncoded) {
    const auto quoted = seen({{"Content-Transfer-Encoding", "quoted-printable"}}, "Gr=C3=BC=C3=9Fe\r\n");
    EXPECT_EQ(findingOf("shown encoded", houseFindings(quoted)).grade, Grade::Met);
    const auto base64 = seen({{"Content-Transfer-Encoding", "base64"}},
                             "VGhpcyBpcyBhIGxvbmcgdGV4dCB0aGF0IGlzIGVuY29kZWQgaW4gYmFzZTY0Lg==\r\n");
    EXPECT_EQ(findingOf("shown encoded", houseFindings(base64)).grade, Grade::Met);
    const auto inPart =
        multipart(part("text/plain;", "Content-Transfer-Encoding: quoted-printable\r\n\r\nGr=C3=BC") + kEnd);
    EXPECT_EQ(findingOf("shown encoded", houseFindings(inPart)).grade, Grade::Met);
    const auto plainAfterAll =
        seen({{"Content-Transfer-Encoding", "quoted-printable"}}, "Nothing of it.\r\n");
    EXPECT_THAT(houseFindings(plainAfterAll), IsEmpty());
}

TEST(DoctorsMessages, HtmlIsShownAsSource) {
    const auto html = seen({{"Content-Type", "text/html"}}, "<html><p>Hello</p></html>\r\n");
    EXPECT_EQ(findingOf("HTML", houseFindings(html)).grade, Grade::Met);
}

TEST(DoctorsMessages, OfSeveralAttachmentsTheLastOneAloneCanBeSaved) {
    const std::string file =
        part("application/pdf; name=\"a.pdf\"", "Content-Transfer-Encoding: base64\r\n\r\nQUJD");
    const auto findings = houseFindings(multipart(part("text/plain;", "\r\nSee.") + file + file + kEnd));
    EXPECT_EQ(findingOf("2 attachments", findings).grade, Grade::Met);
}

TEST(DoctorsMessages, AnAttachmentThatIsNotBase64CannotBeSaved) {
    MessageSeen message =
        multipart(part("text/plain;", "\r\nSee.") +
                  part("application/pdf; name=\"a.pdf\"", "\r\nnot base64, but text") + kEnd);
    const Finding finding = findingWith(20502, houseFindings(message));
    EXPECT_EQ(finding.grade, Grade::Met);
    EXPECT_EQ(finding.box, QStringLiteral("Please make sure disk is ready. Error#20502"));
    message.isWhole = false;
    EXPECT_TRUE(findingWith(20502, houseFindings(message)).text.isEmpty());
}

TEST(DoctorsMessages, FurtherPartsThanTwentyAreIgnored) {
    std::string body;
    for (int i = 0; i < 21; ++i) {
        body += part("text/plain;", "\r\none");
    }
    EXPECT_EQ(findingOf("more than 20 parts", houseFindings(multipart(body + kEnd))).grade, Grade::Met);
}

TEST(DoctorsMessages, AWordOfPartHeadersTakesTextAway) {
    const auto findings =
        houseFindings(multipart(part("text/plain;", "\r\nWrite name=value here.\r\nAnd on.") + kEnd));
    EXPECT_EQ(findingOf("belongs to the headers of a part", findings).grade, Grade::Met);
}

TEST(DoctorsMessages, HeadersOfPartsWithinAPartTakeNoTextAway) {
    const std::string inner =
        "\r\n--inner-27aa\r\nContent-Type: text/plain; charset=utf-8\r\n\r\none\r\n"
        "--inner-27aa\r\nContent-Type: text/html; charset=utf-8\r\n\r\ntwo\r\n--inner-27aa--\r\n";
    EXPECT_THAT(
        houseFindings(multipart(part("multipart/alternative; boundary=\"inner-27aa\"", inner) + kEnd)),
        IsEmpty());
}

TEST(DoctorsMessages, OneWithoutASizeAndOneThatIsFarTooLargeCannotBeOpened) {
    MessageSeen message = seen({}, "text\r\n");
    message.size.reset();
    EXPECT_EQ(findingWith(20342, houseFindings(message)).grade, Grade::Met);
    message.size = 256 << 20;
    for (const MailMode mode : {MailMode::House, MailMode::Standard}) {
        EXPECT_EQ(findingWith(7, findingsOf(message, mode)).grade, Grade::Met);
    }
}

TEST(DoctorsMessages, WhatAStrangerHasWrittenIsShownAndNotObeyed) {
    MessageSeen message = seen({{"Content-Type", "multipart/mixed; boundary=abc"}}, "x\r\n");
    message.header[1].value = "one\x1b[2Jtwo";
    const auto findings = houseFindings(message);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_FALSE(findings[0].subject.contains(QChar(0x1b)));
}
} // namespace
