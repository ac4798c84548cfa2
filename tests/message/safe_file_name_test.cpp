#include "message/safe_file_name.h"
#include "platform/text.h"
#include "tests/support/sanitizer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct FileNameCase {
    const char* name;
    QString from;
    QString to;
};

/** The name as the window makes it from the message's bytes. */
QString named(const std::string& bytes) {
    return platform::fromBytes(bytes);
}

const std::vector<FileNameCase>& unsafeNames() {
    static const std::vector<FileNameCase> table{
        {"UpAndAway", named("../x"), named("___x")},
        {"UpWithBackslash", named("..\\..\\x.bat"), named("___.._x.bat")},
        {"FromTheRoot", named("/etc/x"), named("_etc_x")},
        {"Drive", named("C:\\x"), named("C__x")},
        {"DriveAlone", named("C:x"), named("C_x")},
        {"TimeOfDay", named("12:30.txt"), named("12_30.txt")},
        {"Folder", named("a/b"), named("a_b")},
        {"WhatMemorySticksRefuse", named("*a?b\"c<d>e|.txt"), named("_a_b_c_d_e_.txt")},
        {"EncodedWord", named("=?utf-8?B?a/b==?="), named("=_utf-8_B_a_b==_=")},
        {"Nothing", named(""), named("attachment")},
        {"Blanks", named("   "), named("attachment")},
        {"WhiteSpace", named(" \t\r\n"), named("attachment")},
        {"Dot", named("."), named("_")},
        {"TwoDots", named(".."), named("__")},
        {"Hidden", named(".bashrc"), named("_bashrc")},
        {"BlankFirst", named(" .a"), named("__a")},
        {"DotsLast", named("a.txt.."), named("a.txt__")},
        {"BlankLast", named("a.txt "), named("a.txt_")},
        {"Nul", named(std::string("a\0b", 3)), named("a_b")},
        {"LineEnd", named("a\r\nb"), named("a__b")},
        {"Escape", named("a\x1b[2J"), named("a_[2J")},
        {"Delete", named("a\x7f"), named("a_")},
        {"DirectionOverride",
         named("a\xe2\x80\xae"
               "fdp.exe"),
         named("a_fdp.exe")},
        {"LineSeparator", named("a\xe2\x80\xa8.txt"), named("a_.txt")},
        {"Device", named("CON"), named("_CON")},
        {"DeviceInSmallLetters", named("nul"), named("_nul")},
        {"DeviceWithExtension", named("Aux.h"), named("_Aux.h")},
        {"DeviceWithExtensions", named("prn.tar.gz"), named("_prn.tar.gz")},
        {"DeviceBeforeABlank", named("CON .txt"), named("_CON .txt")},
        {"SerialPort", named("com1.txt"), named("_com1.txt")},
        {"PrinterPort", named("LPT9"), named("_LPT9")},
    };
    return table;
}

class UnsafeFileName : public testing::TestWithParam<FileNameCase> {};

TEST_P(UnsafeFileName, BecomesASafeOne) {
    EXPECT_EQ(safeFileName(GetParam().from), GetParam().to);
    EXPECT_EQ(safeFileName(GetParam().to), GetParam().to) << "a safe name is not changed";
}

INSTANTIATE_TEST_SUITE_P(Names, UnsafeFileName, testing::ValuesIn(unsafeNames()),
                         [](const auto& test) { return test.param.name; });

TEST(SafeFileName, ANameThatIsSafeStaysLetterForLetter) {
    for (const char* name :
         {"a", "report.pdf", "a  b.txt", "archive.tar.gz", "-rf", "~$a.doc", "a'b&c;d$(e).txt", "CONSOLE.txt",
          "COM0", "COM10", "LPT", "COM1st.txt", "\303\234bersicht M\303\244rz.pdf",
          "\xe6\x97\xa5\xe6\x9c\xac.txt", "\xf0\x9f\x98\x80.png", "tolk.ini"}) {
        EXPECT_EQ(safeFileName(named(name)).toStdString(), name);
    }
}

TEST(SafeFileName, ALongNameIsShortenedBeforeItsExtension) {
    const QString name = safeFileName(QString(300, u'n') + QStringLiteral(".pdf"));
    EXPECT_EQ(name, QString(251, u'n') + QStringLiteral(".pdf"));
    EXPECT_EQ(safeFileName(QString(251, u'n') + QStringLiteral(".pdf")), name);
}

TEST(SafeFileName, ALongNameIsShortenedBetweenTwoCharacters) {
    for (const char16_t* letter : {u"\u00e4", u"\u65e5"}) {
        for (int before = 0; before < 4; ++before) {
            const QString name = safeFileName(
                QString(before, u'x') + QString::fromUtf16(letter).repeated(200) + QStringLiteral(".txt"));
            const qsizetype bytes = name.toUtf8().size();
            EXPECT_LE(bytes, 255);
            EXPECT_GT(bytes, 251);
            EXPECT_FALSE(name.contains(QChar::ReplacementCharacter));
            EXPECT_TRUE(name.endsWith(QStringLiteral(".txt")));
        }
    }
    const QString faces =
        safeFileName(QStringLiteral("x") + QString::fromUtf8("\xf0\x9f\x98\x80").repeated(100));
    EXPECT_EQ(faces, QStringLiteral("x") + QString::fromUtf8("\xf0\x9f\x98\x80").repeated(63));
}

TEST(SafeFileName, WhatIsTooLongForAnExtensionIsNone) {
    EXPECT_EQ(safeFileName(QStringLiteral("a.") + QString(400, u'x')),
              QStringLiteral("a.") + QString(253, u'x'));
    EXPECT_EQ(safeFileName(QString(254, u'x') + QStringLiteral(". ") + QString(400, u'y')),
              QString(254, u'x') + QStringLiteral("_"))
        << "no dot is left at the end";
}

TEST(SafeFileName, ANameOfMegabytesTakesNoTime) {
    EXPECT_EQ(safeFileName(QString(support::kSanitized ? 2'000'000 : 20'000'000, u'/')), QString(255, u'_'));
}

} // namespace
