#include "message/mime_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class MimeParser : public testing::Test {
  protected:
    int parse(const std::string& body, const std::string& boundary = "B0") {
        const ReadMessage read = readMultipart(body, boundary);
        text = read.text.value_or("none");
        for (const FoundAttachment& attachment : read.attachments) {
            names.push_back(attachment.name);
            parts.emplace_back(attachment.part);
        }
        return read.error;
    }

    /** A body of parts, each with its own header lines, as mail programs write it. */
    static std::string bodyOf(const std::vector<std::string>& parts, const std::string& boundary = "B0") {
        std::string body = "The preamble\r\n";
        for (const std::string& part : parts) {
            body.append("--").append(boundary).append("\r\n").append(part);
        }
        return body + "--" + boundary + "--\r\n";
    }

    static std::string plain(const std::string& content) {
        return "Content-Type: text/plain; charset=us-ascii\r\n\r\n" + content + "\r\n";
    }

    static std::string file(const std::string& name, const std::string& content) {
        return "Content-Type: application/octet-stream; name=\"" + name +
               "\"\r\nContent-Transfer-Encoding: base64\r\n\r\n" + content + "\r\n";
    }

    const std::string& shown() const { return text; }

    std::string text;
    std::vector<std::string> names;
    std::vector<std::string> parts;
};
} // namespace

TEST_F(MimeParser, TakesTheTextAndLeavesTheHyphensOfTheNextBoundaryLine) {
    EXPECT_EQ(parse(bodyOf({plain("Hello")})), 0);
    EXPECT_EQ(shown(), "\r\nHello\r\n--");
}

TEST_F(MimeParser, ThePreambleIsNeverLookedAt) {
    EXPECT_EQ(parse("Content-Type: text/plain; x\r\nno part\r\n" + bodyOf({plain("Hello")})), 0);
    EXPECT_EQ(shown(), "\r\nHello\r\n--");
}

TEST_F(MimeParser, PlainTextAndHtmlAreBothShownInTheOrderOfTheParts) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: text/html; x\r\n\r\n<b>two</b>\r\n", plain("one")})), 0);
    EXPECT_EQ(shown(), "\r\n<b>two</b>\r\n--\r\n\r\none\r\n--");
}

TEST_F(MimeParser, ATypeWithoutASemicolonAnywhereBehindItIsError5) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: text/plain\r\n\r\nHello\r\n"})), 5);
}

TEST_F(MimeParser, ATypeWithItsSemicolonInALaterLineIsNeitherTextNorAttachment) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: text/plain\r\n\r\nHello; you\r\n"})), 0);
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(MimeParser, ATypeThatReachesIntoLaterLinesStillBeginsAsAnAttachment) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: image/png\r\nX: name=\"a.png\"; y\r\n\r\nAAAA\r\n"})), 0);
    EXPECT_THAT(names, ElementsAre("a.png"));
}

TEST_F(MimeParser, WithoutATextPartTheTextStaysEmptyAndTheAttachmentIsListed) {
    EXPECT_EQ(parse(bodyOf({file("a.bin", "QUJD")})), 0);
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_THAT(names, ElementsAre("a.bin"));
}

TEST_F(MimeParser, AnAttachmentIsHandedOverAsTheWholePart) {
    EXPECT_EQ(parse(bodyOf({file("a.bin", "QUJD")})), 0);
    EXPECT_THAT(parts, ElementsAre("\r\n" + file("a.bin", "QUJD") + "--"));
}

TEST_F(MimeParser, OfSeveralAttachmentsTheLastComesLast) {
    EXPECT_EQ(parse(bodyOf({file("one", "QQ=="), file("two", "Qg==")})), 0);
    EXPECT_THAT(names, ElementsAre("one", "two"));
}

TEST_F(MimeParser, EveryKindOfAttachmentTypeIsOne) {
    for (const std::string type : {"application/pdf", "audio/x", "video/x", "image/x"}) {
        names.clear();
        EXPECT_EQ(parse(bodyOf({"Content-Type: " + type + "; name=\"n\"\r\n\r\nQQ==\r\n"})), 0);
        EXPECT_THAT(names, ElementsAre("n")) << type;
    }
}

TEST_F(MimeParser, AnAttachmentWithoutQuotesAroundItsNameIsError5) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: image/png; name=a.png\r\n\r\nQQ==\r\n"})), 5);
    EXPECT_EQ(parse(bodyOf({"Content-Type: image/png; name=\"a.png\r\n\r\nQQ==\r\n"})), 5);
    EXPECT_EQ(parse(bodyOf({"Content-Type: image/png; x\r\n\r\nQQ==\r\n"})), 5);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(MimeParser, TheNameOfAFilenameParameterServesToo) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: image/png; x\r\nContent-Disposition: a; filename=\"f\"\r\n\r\n"})),
              0);
    EXPECT_THAT(names, ElementsAre("f"));
}

TEST_F(MimeParser, SearchesAreCaseSensitiveSoThatAPartInheritsTheTypeOfTheOneBefore) {
    EXPECT_EQ(parse(bodyOf({file("one", "QQ=="), "content-type: text/plain; x\r\nname=\"two\"\r\n"})), 0);
    EXPECT_THAT(names, ElementsAre("one", "two"));
}

TEST_F(MimeParser, ATextTypeThatIsInheritedIsError5) {
    EXPECT_EQ(parse(bodyOf({plain("one"), "\r\nno type\r\n"})), 5);
    EXPECT_EQ(shown(), "\r\none\r\n--") << "what came before stays";
}

TEST_F(MimeParser, APartWithoutATypeBeforeAnyOtherIsPassedOver) {
    EXPECT_EQ(parse(bodyOf({"\r\nno type\r\n", plain("one")})), 0);
    EXPECT_EQ(shown(), "\r\none\r\n--");
}

TEST_F(MimeParser, MoreThanTwentyPartsShowWhatTheFirstTwentyYield) {
    std::vector<std::string> many;
    for (int i = 1; i <= 25; ++i) {
        many.push_back(file("n" + std::to_string(i), "QQ=="));
    }
    EXPECT_EQ(parse(bodyOf(many)), 0);
    EXPECT_EQ(names.size(), 20U);
    EXPECT_EQ(names.back(), "n20");
}

TEST_F(MimeParser, AForwardedMessageIsShownWithoutTheTwoFurtherPasses) {
    EXPECT_EQ(parse(bodyOf(
                  {"Content-Type: message/rfc822; x\r\n\r\nSubject: s\r\nContent-Type: a\r\n\r\nText\r\n"})),
              0);
    EXPECT_EQ(shown(), "\r\nSubject: s\r\nContent-Type: a\r\n\r\nText\r\n--");
}

TEST_F(MimeParser, ATextPartIsStrippedThreeTimesInAll) {
    EXPECT_EQ(
        parse(bodyOf({"Content-Type: text/plain; x\r\n1 name= \r\n2 name= \r\n3 name= \r\n4 name= \r\nend"})),
        0);
    EXPECT_EQ(shown(), "4 name= \r\nend--");
}

TEST_F(MimeParser, AKeyInRunningTextCutsTheTextThere) {
    EXPECT_EQ(parse(bodyOf({plain("first line\r\nhis name= was\r\nlast line")})), 0);
    EXPECT_EQ(shown(), "last line\r\n--");
}

TEST_F(MimeParser, OfAnAlternativeTheLastPlainTextReplacesAllTextSoFar) {
    const std::string alternative =
        "Content-Type: multipart/alternative; boundary=\"X1\"\r\n\r\n" +
        bodyOf({plain("inner one"), "Content-Type: text/html; x\r\n\r\n<p>\r\n", plain("inner two")}, "X1");
    EXPECT_EQ(parse(bodyOf({plain("outer"), alternative})), 0);
    EXPECT_EQ(shown(), "\r\ninner two\r\n--");
}

TEST_F(MimeParser, AnAlternativeWithoutABoundaryIsPassedOver) {
    EXPECT_EQ(parse(bodyOf({plain("outer"), "Content-Type: multipart/alternative; x\r\n\r\n"})), 0);
    EXPECT_EQ(shown(), "\r\nouter\r\n--");
}

TEST_F(MimeParser, AnAlternativeWhoseBoundaryHasNoQuotesIsError5) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: multipart/alternative; boundary=in\r\n\r\n"})), 5);
}

TEST_F(MimeParser, AnAlternativeWithAnEmptyBoundaryYieldsNothingAndEnds) {
    EXPECT_EQ(parse(bodyOf({"Content-Type: multipart/alternative; boundary=\"\"\r\n\r\n", plain("x")})), 0);
    EXPECT_EQ(shown(), "\r\nx\r\n--");
}

TEST_F(MimeParser, OfAnAlternativeOnlyTheFirstTwentyPartsCount) {
    std::vector<std::string> inner;
    for (int i = 1; i <= 30; ++i) {
        inner.push_back(plain("inner " + std::to_string(i)));
    }
    // The boundary occurs first in its own parameter, where the first of the twenty parts begins.
    EXPECT_EQ(
        parse(bodyOf({"Content-Type: multipart/alternative; boundary=\"X1\"\r\n\r\n" + bodyOf(inner, "X1")})),
        0);
    EXPECT_EQ(shown(), "\r\ninner 19\r\n--");
}

TEST_F(MimeParser, ABoundaryThatNeverComesYieldsNothing) {
    EXPECT_EQ(parse("no parts at all"), 0);
    EXPECT_EQ(parse("--B0 only one"), 0);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(MimeParser, ABoundaryThatBeginsAnotherCutsThereToo) {
    EXPECT_EQ(parse("--B0\r\n" + plain("one") + "--B01\r\n"), 0);
    EXPECT_EQ(shown(), "\r\none\r\n--");
}

TEST_F(MimeParser, WhatWasFoundStaysWhenALaterPartFails) {
    EXPECT_EQ(parse(bodyOf({file("one", "QQ=="), plain("text"), "Content-Type: image/png; name=x\r\n"})), 5);
    EXPECT_THAT(names, ElementsAre("one"));
    EXPECT_EQ(shown(), "\r\ntext\r\n--");
}
