#include "email/opening.h"
#include "email/shared_settings.h"
#include "tests/reader/reader_fixture.h"
#include "tests/support/base64_text.h"
#include "tests/support/file_faults.h"
#include "tests/support/random_bytes.h"

#include <sys/stat.h>

using support::attachmentPart;
using support::multipart;
using support::ReaderTest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
class SaveAttachment : public ReaderTest {
  protected:
    void openWith(const std::string& name, const std::string& encoded) {
        openOnly(multipart({attachmentPart(name, encoded)}));
        ASSERT_THAT(boxTexts(), IsEmpty());
    }

    void save() {
        boxes.clear();
        messageWindow().cmdSave->click();
    }

    void expectSaved(const QString& path) {
        ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Attachment has been saved to: ") + path));
        EXPECT_EQ(boxes[0].title, QStringLiteral("Brindlewake"));
        EXPECT_TRUE(messageWindow().isEnabled());
    }

    void expectRefused(int number) {
        ASSERT_THAT(boxTexts(), ElementsAre(QStringLiteral("Please make sure disk is ready. Error#") +
                                            QString::number(number)));
        EXPECT_EQ(boxes[0].title, QStringLiteral("Example School E-Mail"));
        EXPECT_TRUE(messageWindow().isEnabled());
        EXPECT_NE(messageWindow().cursor().shape(), Qt::WaitCursor);
    }
};

struct NameCase {
    const char* label;
    std::string name;
    std::string savedAs;
};

class SaveAttachmentNamed : public SaveAttachment, public testing::WithParamInterface<NameCase> {};

const NameCase kNames[] = {{"UpAndAway", "../x", "___x"},
                           {"UpWithBackslash", "..\\..\\x.bat", "___.._x.bat"},
                           {"FromTheRoot", "/etc/x", "_etc_x"},
                           {"Drive", "C:\\x", "C__x"},
                           {"Nothing", "", "attachment"},
                           {"Blanks", "  ", "attachment"},
                           {"Hidden", ".bashrc", "_bashrc"},
                           {"Nul", std::string("a\0b", 3), "a_b"},
                           {"EncodedWord", "=?utf-8?B?a/b==?=", "=_utf-8_B_a_b==_="},
                           {"WhatMemorySticksRefuse", "a*?<>|. ", "a_______"},
                           {"DeviceName", "con.txt", "_con.txt"},
                           {"DirectionOverride",
                            "a\xe2\x80\xae"
                            "fdp.exe",
                            "a_fdp.exe"},
                           {"TooLong", std::string(300, 'n') + ".txt", std::string(251, 'n') + ".txt"},
                           {"Usual", "M\xc3\xa4rz 2024.pdf", "M\xc3\xa4rz 2024.pdf"}};

struct OwnFileCase {
    const char* label;
    const char* saveDirectory;
    const char* name;
    /** The path of one of the program's own files, from the current folder. */
    const char* ownFile;
    /** Whether the attachment's name differs from it in upper and lower case. */
    bool otherCase = false;
};

class SaveAttachmentOver : public SaveAttachment, public testing::WithParamInterface<OwnFileCase> {
  protected:
    /** A member whose home folder is the folder that the program was started in. */
    void SetUp() override {
        qputenv("BRINDLEWAKE_DRIVE_C", folder.path().string().c_str());
        std::filesystem::create_directory(folder.path("sub"));
        std::filesystem::create_directory_symlink(".", folder.path("here"));
    }
};

const OwnFileCase kOwnFiles[] = {{"Settings", "S:\\", "tolk.ini", "tolk.ini"},
                                 {"SettingsInTheCurrentFolder", "", "tolk.ini", "tolk.ini"},
                                 {"SettingsByALongWay", R"(S:\sub\..\.\)", "tolk.ini", "tolk.ini"},
                                 {"SettingsByALinkedFolder", "S:\\here\\", "tolk.ini", "tolk.ini"},
                                 {"SettingsGluedTogether", "S:\\to", "lk.ini", "tolk.ini"},
                                 {"SettingsOnDriveC", "C:\\", "tolk.ini", "tolk.ini"},
                                 {"Picture", "S:\\", "tolk.jpg", "tolk.jpg"},
                                 {"Sound", "S:\\", "Gotmail.wav", "Gotmail.wav"},
                                 {"SoundInSmallLetters", "S:\\", "gotmail.WAV", "Gotmail.wav", true},
                                 {"EncodedAttachment", "S:\\", "_tolk.tmp", "_tolk.tmp"},
                                 {"OutgoingFile", "S:\\", "_brndwake.tmp", "_brndwake.tmp"},
                                 {"OutgoingFileOnDriveC", "c:/", "_brndwake.tmp", "_brndwake.tmp"}};

struct TextCase {
    const char* label;
    /** The header fields behind the part's Content-Type. */
    std::string restOfHeader;
    std::string text;
    std::string saved;
    int error = 0;
};

class SaveAttachmentOf : public SaveAttachment, public testing::WithParamInterface<TextCase> {};

const std::string kReport = support::randomBytes(67'511, 3);

const std::string kBase64 = "Content-Transfer-Encoding: base64\r\n";
const TextCase kTexts[] = {
    {"FoldedDisposition", kBase64 + "Content-Disposition: attachment; filename=\"a.bin\";\r\n size=35648\r\n",
     support::base64Text(kReport), kReport},
    {"SizeAndDatesOnLinesOfTheirOwn",
     kBase64 + "Content-Disposition: attachment;\r\n\tfilename=\"a.bin\"; size=67511;\r\n"
               "\tcreation-date=\"Mon, 04 Mar 2024 10:11:12 GMT\";\r\n"
               "\tmodification-date=\"Mon, 04 Mar 2024 10:11:12 GMT\"\r\n",
     support::base64Text(kReport), kReport},
    {"ExtendedName",
     kBase64 +
         "Content-Disposition: attachment; filename=\"a.bin\";\r\n filename*=utf-8''a.bin;\r\n size=1\r\n",
     support::base64Text(kReport), kReport},
    {"FieldsBehindTheKnownOnes", kBase64 + "Content-ID: <f_1>\r\nX-Attachment-Id: f_1\r\n",
     support::base64Text(kReport), kReport},
    {"Json", "Content-Transfer-Encoding: 7bit\r\n", "{\r\n  \"a\": 1,\r\n  \"b\": [2]\r\n}", "", 20502},
    {"JsonOnOneLine", "Content-Transfer-Encoding: 7bit\r\n", "{\"a\":1}", "", 20502},
    {"TextThatLooksLikeFields", "Content-Transfer-Encoding: 7bit\r\n", "key: value\r\nother: 1\r\n", "",
     20502},
    {"QuotedPrintable", "Content-Transfer-Encoding: quoted-printable\r\n", "Gr=C3=BC=C3=9Fe aus K=C3=B6ln",
     "", 20502},
    {"PlainText", "Content-Transfer-Encoding: 7bit\r\n", "Thank you", "", 20502},
    {"Hello", "Content-Transfer-Encoding: 7bit\r\n", "Hello", "", 20502},
    {"JsonBehindAFoldedHeader", "Content-Disposition: attachment; filename=\"a.bin\";\r\n size=7\r\n",
     "{\"a\":1}", "", 20502}};
} // namespace

TEST_F(SaveAttachment, DecodesTheFileIntoTheFolderForAttachments) {
    openWith("hello.txt", "SGVs\r\nbG8=");
    save();
    expectSaved(QStringLiteral("S:\\hello.txt"));
    EXPECT_EQ(folder.read("hello.txt"), "Hello");

    struct stat status {};

    ASSERT_EQ(::stat(folder.path("hello.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0600U);
    EXPECT_EQ(folder.read("_tolk.tmp"), "\r\nSGVs\r\nbG8=\r\n--\r\n");
}

TEST_F(SaveAttachment, SavingTwiceOverwritesTheEarlierFileWithoutAsking) {
    openWith("a.bin", "QUJD");
    save();
    folder.write("a.bin", "something longer than before");
    save();
    expectSaved(QStringLiteral("S:\\a.bin"));
    EXPECT_EQ(folder.read("a.bin"), "ABC");
}

TEST_F(SaveAttachment, AFolderWithoutABackslashIsRunTogetherWithTheName) {
    openWith("a.bin", "QUJD");
    email::settings.SaveDirectory = QStringLiteral("S:\\SAVED");
    save();
    expectSaved(QStringLiteral("S:\\SAVEDa.bin"));
    EXPECT_EQ(folder.read("SAVEDa.bin"), "ABC");
}

TEST_P(SaveAttachmentNamed, IsSavedInTheFolderUnderASafeName) {
    openWith("a.bin", "QUJD");
    email::opening.CurrentAttachment = GetParam().name;
    const std::size_t before = folder.entries();
    save();
    expectSaved(QStringLiteral("S:\\") + QString::fromStdString(GetParam().savedAs));
    EXPECT_EQ(folder.read(GetParam().savedAs), "ABC");
    EXPECT_EQ(folder.entries(), before + 1);
}

INSTANTIATE_TEST_SUITE_P(SaveAttachment, SaveAttachmentNamed, testing::ValuesIn(kNames),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(SaveAttachment, AnUnsafeNameIsShownAsItIsAndTheBoxTellsTheOneThatWasTaken) {
    openWith("..\\..\\x.bat", "QUJD");
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("..\\..\\x.bat"));
    save();
    expectSaved(QStringLiteral("S:\\___.._x.bat"));
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("..\\..\\x.bat"));
}

TEST_P(SaveAttachmentOver, AFileOfTheProgramsOwnIsRefusedWhetherItIsThereOrNot) {
    openWith(GetParam().name, "QUJD");
    email::settings.SaveDirectory = QString::fromLatin1(GetParam().saveDirectory);
    const std::string ownFile = GetParam().ownFile;
    for (const bool there : {true, false}) {
        std::filesystem::remove(folder.path(ownFile));
        if (there) {
            folder.write(ownFile, "own");
            if (GetParam().otherCase && !std::filesystem::exists(folder.path(GetParam().name))) {
                continue; // another file, since this file system tells small letters from capitals
            }
        }
        const std::size_t before = folder.entries();
        save();
        expectRefused(20503);
        EXPECT_EQ(folder.entries(), before);
        EXPECT_TRUE(!there || folder.read(ownFile) == "own");
    }
}

INSTANTIATE_TEST_SUITE_P(SaveAttachment, SaveAttachmentOver, testing::ValuesIn(kOwnFiles),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(SaveAttachment, TheSharedSettingsFileAtTheEndOfALinkIsNeverATarget) {
    const support::TemporaryFolder shared;
    openWith("school.ini", "QUJD");
    const std::string settings = folder.read("tolk.ini");
    shared.write("school.ini", settings);
    std::filesystem::remove(folder.path("tolk.ini"));
    std::filesystem::create_symlink(shared.path("school.ini"), folder.path("tolk.ini"));
    email::settings.SaveDirectory =
        QStringLiteral("Z:") + QString::fromStdString(shared.path().string()) + u'\\';
    save();
    expectRefused(20503);
    EXPECT_EQ(shared.read("school.ini"), settings);
}

TEST_F(SaveAttachment, AFileOfTheSameNameInAnotherFolderIsNotTheProgramsOwn) {
    openWith("tolk.ini", "QUJD");
    std::filesystem::create_directory(folder.path("sub"));
    email::settings.SaveDirectory = QStringLiteral("S:\\sub\\");
    save();
    expectSaved(QStringLiteral("S:\\sub\\tolk.ini"));
    EXPECT_EQ(folder.read("sub/tolk.ini"), "ABC");
}

TEST_P(SaveAttachmentOf, IsSavedByteForByteOrNotAtAll) {
    // The boundary holds "_", which base64 never uses, so that the content cannot hold the boundary.
    openOnly("Content-Type: multipart/mixed; boundary=\"=_cut\"\r\n\r\n--=_cut\r\n"
             "Content-Type: application/octet-stream; name=\"a.bin\"\r\n" +
             GetParam().restOfHeader + "\r\n" + GetParam().text + "\r\n--=_cut--\r\n");
    ASSERT_THAT(boxTexts(), IsEmpty());
    folder.write("a.bin", "older");
    save();
    if (GetParam().error == 0) {
        expectSaved(QStringLiteral("S:\\a.bin"));
        EXPECT_TRUE(folder.read("a.bin") == GetParam().saved);
    } else {
        expectRefused(GetParam().error);
        EXPECT_EQ(folder.read("a.bin"), "older");
    }
}

INSTANTIATE_TEST_SUITE_P(SaveAttachment, SaveAttachmentOf, testing::ValuesIn(kTexts),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(SaveAttachment, TheFileOfEncodedContentKeepsWhatTheStripperLeaves) {
    openOnly(multipart({"Content-Type: application/pdf; name=\"a.pdf\"\r\n"
                        "Content-Disposition: attachment; filename=\"a.pdf\";\r\n size=3\r\n\r\nQUJD"}));
    EXPECT_EQ(folder.read("_tolk.tmp"), " size=3\r\n\r\nQUJD\r\n--\r\n");
}

TEST_F(SaveAttachment, ADriveWithoutADiskIsNotReady) {
    openWith("a.bin", "QUJD");
    email::settings.SaveDirectory = QStringLiteral("Q:\\");
    save();
    expectRefused(68);
}

TEST_F(SaveAttachment, AFolderThatIsMissingIsReported) {
    openWith("a.bin", "QUJD");
    email::settings.SaveDirectory = QStringLiteral("S:\\none\\");
    save();
    expectRefused(75);
}

TEST_F(SaveAttachment, ATextThatIsCutOffLeavesTheOlderFileAsItWas) {
    openWith("a.bin", "QUJDR");
    folder.write("a.bin", "older");
    save();
    expectRefused(20502);
    EXPECT_EQ(folder.read("a.bin"), "older");
}

TEST_F(SaveAttachment, ADiskThatFillsUpLeavesTheOlderFileAsItWas) {
    openWith("a.bin", std::string(8'000, 'A'));
    folder.write("a.bin", "older");
    {
        const support::FileSizeLimit limit(1'000);
        save();
    }
    expectRefused(57);
    EXPECT_EQ(folder.read("a.bin"), "older");
}

TEST_F(SaveAttachment, ADeviceIsNoPlaceForAFile) {
    openWith("a.bin", "QUJD");
    email::settings.SaveDirectory = QStringLiteral("Z:\\dev\\");
    email::opening.CurrentAttachment = "full";
    save();
    // Nothing is written, since a device is not a regular file.
    expectRefused(75);
}

TEST_F(SaveAttachment, LinksPipesAndFoldersAreLeftAlone) {
    openWith("a.bin", "QUJD");
    folder.write("key", "secret");
    std::filesystem::create_symlink(folder.path("key"), folder.path("link"));
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(folder.path("box"));
    for (const char* name : {"link", "pipe", "box"}) {
        email::opening.CurrentAttachment = name;
        save();
        expectRefused(75);
    }
    EXPECT_EQ(folder.read("key"), "secret");
}

TEST_F(SaveAttachment, WithoutTheEncodedFileThereIsNothingToSave) {
    openWith("a.bin", "QUJD");
    std::filesystem::remove(folder.path("_tolk.tmp"));
    save();
    expectRefused(53);
    EXPECT_FALSE(std::filesystem::exists(folder.path("a.bin")));
}

TEST_F(SaveAttachment, AnEmptyAttachmentIsAnEmptyFile) {
    openWith("empty.txt", "");
    save();
    expectSaved(QStringLiteral("S:\\empty.txt"));
    EXPECT_EQ(folder.read("empty.txt"), "");
}

TEST_F(SaveAttachment, WhileItSavesTheWindowCannotBeClosed) {
    openWith("big.bin", [] {
        std::string text;
        for (int line = 0; line < 60'000; ++line) {
            text += std::string(76, 'A') + "\r\n";
        }
        return text;
    }());
    bool looked = false;
    const support::WhenItHolds close([] { return !messageWindow().isEnabled(); },
                                     [&] {
                                         looked = true;
                                         messageWindow().close();
                                         EXPECT_TRUE(messageWindow().isVisible());
                                     });
    save();
    EXPECT_TRUE(looked);
    expectSaved(QStringLiteral("S:\\big.bin"));
    EXPECT_EQ(std::filesystem::file_size(folder.path("big.bin")), 60'000U * 57U);
}
