#include "components/controls/pasted_text.h"
#include "components/controls/shown_lines.h"

#include <gtest/gtest.h>

using controls::kMostPastedCharacters;
using controls::kMostPastedLines;
using controls::kShownBreak;
using controls::pastableText;

namespace {
constexpr auto kLongest = static_cast<qsizetype>(controls::kLongestShownLine);

QString letters(qsizetype count) {
    return {count, u'x'};
}
} // namespace

TEST(PastedText, EveryLineEndIsTheBoxsOwn) {
    EXPECT_EQ(pastableText(QStringLiteral("a\r\nb\rc\nd\u2028e\u2029f")), QStringLiteral("a\nb\nc\nd\ne\nf"));
    EXPECT_EQ(pastableText(QString()), QString());
}

TEST(PastedText, WhatABoxCannotHoldIsASign) {
    const QString binary = QString(QChar(u'\0')) + QChar(0xFDD0) + QChar(0xFDD1) + u'a';
    EXPECT_EQ(pastableText(binary), QString(3, QChar::ReplacementCharacter) + u'a');
}

TEST(PastedText, ALineThatIsTooLongIsBrokenBehindItsLastSpace) {
    const QString words = letters(kLongest - 100) + u' ';
    EXPECT_EQ(pastableText(words + letters(200)), words + kShownBreak + letters(200));
    EXPECT_EQ(pastableText(letters(kLongest + 1)), letters(kLongest) + kShownBreak + u'x');
    EXPECT_EQ(pastableText(letters(kLongest)), letters(kLongest));
    EXPECT_EQ(pastableText(letters(kLongest) + QStringLiteral("\nx")),
              letters(kLongest) + QStringLiteral("\nx"));
}

TEST(PastedText, ACharacterIsNeverBroken) {
    const QString envelope = QStringLiteral("\U0001F4E7");
    EXPECT_EQ(pastableText(letters(kLongest - 1) + envelope), letters(kLongest - 1) + kShownBreak + envelope);
}

TEST(PastedText, TooMuchIsNotTakenAtAll) {
    EXPECT_TRUE(pastableText(letters(kMostPastedCharacters)).has_value());
    EXPECT_FALSE(pastableText(letters(kMostPastedCharacters + 1)).has_value());
    EXPECT_TRUE(pastableText(QString(kMostPastedLines - 1, u'\n')).has_value());
    EXPECT_FALSE(pastableText(QString(kMostPastedLines, u'\n')).has_value());
}
