#include "tests/reader/windows/reader_fixture.h"
#include "tests/support/file_faults.h"

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
};

class SaveAttachmentNamed : public SaveAttachment, public testing::WithParamInterface<NameCase> {};

const NameCase kUnsafeNames[] = {{"UpAndAway", "../x"},
                                 {"UpWithBackslash", "..\\x"},
                                 {"FromTheRoot", "/etc/x"},
                                 {"Drive", "C:\\x"},
                                 {"DriveAlone", "C:x"},
                                 {"Folder", "a/b"},
                                 {"Backslash", "a\\b"},
                                 {"Nothing", ""},
                                 {"Dot", "."},
                                 {"TwoDots", ".."},
                                 {"Hidden", ".bashrc"},
                                 {"Nul", std::string("a\0b", 3)},
                                 {"Newline", "a\nb"},
                                 {"CarriageReturn", "a\rb"},
                                 {"Escape", "a\x1b[2J"},
                                 {"DirectionOverride", "a\xe2\x80\xae"
                                                       "fdp.exe"}};
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

TEST_P(SaveAttachmentNamed, IsRefusedWithANumberOfItsOwn) {
    openWith("a.bin", "QUJD");
    email::state.CurrentAttachment = GetParam().name;
    const std::size_t before = folder.entries();
    save();
    expectRefused(20503);
    EXPECT_EQ(folder.entries(), before);
}

INSTANTIATE_TEST_SUITE_P(SaveAttachment, SaveAttachmentNamed, testing::ValuesIn(kUnsafeNames),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(SaveAttachment, ANameOf300CharactersIsRefusedByTheDisk) {
    openWith(std::string(300, 'n'), "QUJD");
    save();
    expectRefused(75);
}

TEST_F(SaveAttachment, AnUnsafeNameIsShownButNotSaved) {
    openWith("..\\..\\x.bat", "QUJD");
    EXPECT_EQ(messageWindow().txtAttachments->text(), QStringLiteral("..\\..\\x.bat"));
    save();
    expectRefused(20503);
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
    email::state.CurrentAttachment = "full";
    save();
    // A device is no file, so nothing is written into it at all.
    expectRefused(75);
}

TEST_F(SaveAttachment, LinksPipesAndFoldersAreLeftAlone) {
    openWith("a.bin", "QUJD");
    folder.write("key", "secret");
    std::filesystem::create_symlink(folder.path("key"), folder.path("link"));
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(folder.path("box"));
    for (const char* name : {"link", "pipe", "box"}) {
        email::state.CurrentAttachment = name;
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
