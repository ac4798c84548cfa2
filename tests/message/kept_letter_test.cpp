#include "message/kept_letter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

KeptLetter aLetter() {
    return {.to = QStringLiteral("bob@example.org"),
            .copies = QStringLiteral("carl@example.org"),
            .subject = QStringLiteral("Größe\nText 3"),
            .attachment = QStringLiteral("C:\\DOCS\\REPORT.TXT"),
            .text = std::string("One\r\n\xff\0Text 5\n", 14)};
}

TEST(KeptLetter, ComesBackByteForByte) {
    for (const KeptLetter& letter : {aLetter(), KeptLetter()}) {
        const auto read = keptLetterIn(keptLetterFile(letter));
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(*read, letter);
    }
}

TEST(KeptLetter, WhatItTakesAlongFromAnotherMessageIsKeptWhole) {
    KeptLetter letter = aLetter();
    letter.origin.inReplyTo = "<2@example.org>";
    letter.origin.references = {"<1@example.org>", "<2@example.org>"};
    auto read = keptLetterIn(keptLetterFile(letter));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, letter);

    letter.origin = {};
    letter.origin.originalName = QStringLiteral("Größe.eml");
    letter.origin.original = std::make_shared<ReceivedMessage>(
        ReceivedMessage{"Subject: x\r\n", std::string("Text 7\n\xff\0", 9)});
    read = keptLetterIn(keptLetterFile(letter));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, letter);
    letter.origin.original = std::make_shared<ReceivedMessage>(ReceivedMessage{"Subject: x\r\n", "another"});
    EXPECT_FALSE(*read == letter);
}

TEST(KeptLetter, AFileThatIsCutAnywhereOrHasMoreHoldsNone) {
    KeptLetter answer = aLetter();
    answer.origin = {"<1@x.org>", {"<1@x.org>"}, std::make_shared<ReceivedMessage>(), QStringLiteral("a")};
    for (const KeptLetter& letter : {aLetter(), answer}) {
        const std::string file = keptLetterFile(letter);
        for (std::size_t size = 0; size < file.size(); ++size) {
            EXPECT_FALSE(keptLetterIn(file.substr(0, size)).has_value()) << size;
        }
        EXPECT_FALSE(keptLetterIn(file + "x").has_value());
    }
}

TEST(KeptLetter, AFileOfAnythingElseHoldsNone) {
    const std::string first = "Brindlewake letter 1\n";
    for (const std::string& file :
         {std::string("Brindlewake letter 2\n"), first + "To -1\n", first + "To +1\na\n",
          first + "To  1\na\n", first + "To 99999999999999999999\n", first + "To 18446744073709551615\na\n",
          first + "To a\n", first + "Cc 0\n\n", first + "To 1\nab\n", first + "To 1",
          std::string(10'000, '\0')}) {
        EXPECT_FALSE(keptLetterIn(file).has_value()) << file.substr(0, 60);
    }
}

TEST(KeptLetter, IsEmptyWhenNothingStandsInItButTheCopyToTheSender) {
    const QString sender = QStringLiteral("ann@example.org");
    KeptLetter letter;
    EXPECT_TRUE(isEmpty(letter, sender));
    letter.copies = sender;
    EXPECT_TRUE(isEmpty(letter, sender));
    letter.copies = QStringLiteral("bob@example.org");
    EXPECT_FALSE(isEmpty(letter, sender));
    for (QString KeptLetter::*const field :
         {&KeptLetter::to, &KeptLetter::subject, &KeptLetter::attachment}) {
        KeptLetter one;
        one.*field = QStringLiteral(" ");
        EXPECT_FALSE(isEmpty(one, sender));
    }
    letter = {};
    letter.text = "\r\n";
    EXPECT_FALSE(isEmpty(letter, sender));
}

TEST(KeptLetter, EachSenderInEachFolderHasAFileWhoseNameTellsNeither) {
    const QString ann = keptLetterName(QStringLiteral("ann@example.org"), QStringLiteral("/srv/mail"));
    EXPECT_EQ(ann, keptLetterName(QStringLiteral("ann@example.org"), QStringLiteral("/srv/mail")));
    EXPECT_NE(ann, keptLetterName(QStringLiteral("bob@example.org"), QStringLiteral("/srv/mail")));
    EXPECT_NE(ann, keptLetterName(QStringLiteral("ann@example.org"), QStringLiteral("/srv/other")));
    EXPECT_NE(ann, keptLetterName(QStringLiteral("mailann@example.org"), QStringLiteral("/srv/")));
    EXPECT_FALSE(ann.contains(QStringLiteral("ann")));
    EXPECT_FALSE(ann.contains(u'/'));
}

} // namespace
