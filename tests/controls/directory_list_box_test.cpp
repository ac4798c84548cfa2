#include "components/controls/directory_list_box.h"
#include "components/controls/folder_list.h"
#include "platform/runtime_error.h"
#include "tests/support/application.h"
#include "tests/support/drive_stands_for.h"
#include "tests/support/file_faults.h"
#include "tests/support/sanitizer.h"
#include "tests/support/temporary_folder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTextDocument>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace {

using controls::DirectoryListBox;
using platform::errorNumberOf;
using support::DriveStandsFor;
using support::TemporaryFolder;
using testing::ElementsAre;
namespace errors = platform::errors;
namespace filesystem = std::filesystem;

/** A directory list of drive D:, which is a temporary folder. */
class DirectoryListBoxTest : public testing::Test {
  protected:
    DirectoryListBoxTest() {
        list_.Change = [this] { changes_.push_back(list_.path().toStdString()); };
        QObject::connect(&list_, &QAbstractItemView::activated, &list_,
                         [this](const QModelIndex& row) { list_.open(row); });
    }

    void make(std::string_view name) const { filesystem::create_directories(drive_.path(name)); }

    void setPath(std::string_view path) {
        list_.setPath(QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size())));
    }

    int errorOfPath(std::string_view path) {
        return errorNumberOf([&] { setPath(path); });
    }

    std::string path() const { return list_.path().toStdString(); }

    std::vector<std::string> rows() const {
        std::vector<std::string> texts;
        for (int row = 0; row < list_.model()->rowCount(); ++row) {
            texts.push_back(list_.model()->index(row, 0).data().toString().toStdString());
        }
        return texts;
    }

    void choose(int row) { list_.setCurrentIndex(list_.model()->index(row, 0)); }

    QApplication& application_ = support::application();
    const TemporaryFolder drive_;
    const DriveStandsFor d_{'D', drive_.qtPath("")};
    DirectoryListBox list_;
    std::vector<std::string> changes_;
};

TEST_F(DirectoryListBoxTest, HasNoPathBeforeTheFirstOneIsSet) {
    EXPECT_EQ(path(), "");
    EXPECT_THAT(rows(), ElementsAre());
    QTest::keyClick(&list_, Qt::Key_Return);
    QTest::keyClick(&list_, Qt::Key_Backspace);
    EXPECT_EQ(path(), "");
}

TEST_F(DirectoryListBoxTest, ShowsTheWayFromTheRootAndTheFoldersInside) {
    make("docs/mail/b");
    make("docs/mail/a");
    make("docs/other");
    setPath("D:\\docs\\mail");
    EXPECT_THAT(rows(), ElementsAre("D:\\", "docs", "mail", "a", "b"));
    EXPECT_EQ(path(), "D:\\docs\\mail");
    EXPECT_EQ(list_.currentIndex().row(), 2);
}

TEST_F(DirectoryListBoxTest, TheRootsPathEndsInABackslashAndNoOtherDoes) {
    make("docs");
    setPath("D:");
    EXPECT_EQ(path(), "D:\\");
    setPath("D:\\docs\\");
    EXPECT_EQ(path(), "D:\\docs");
}

TEST_F(DirectoryListBoxTest, ManyWaysToWriteAPathLeadToTheSameFolder) {
    make("docs/mail");
    for (const char* written : {R"(d:\docs\mail)", "D:/docs/mail", R"(D:\\docs\mail\\)", R"(D:docs\.\mail)",
                                R"(D:\..\docs\mail\..\mail)"}) {
        setPath(written);
        EXPECT_EQ(path(), "D:\\docs\\mail") << written;
    }
    setPath(drive_.path("docs").string());
    EXPECT_EQ(path(), "D:\\docs") << "a path without a letter";
}

TEST_F(DirectoryListBoxTest, SettingAnotherPathTellsOfTheChangeOnce) {
    make("docs");
    setPath("D:\\docs");
    setPath("D:\\docs");
    setPath("D:\\");
    EXPECT_THAT(changes_, ElementsAre("D:\\docs", "D:\\"));
}

TEST_F(DirectoryListBoxTest, ReturnOpensTheChosenFolderAndBackspaceTheOneAbove) {
    make("docs/mail");
    setPath("D:");
    choose(1);
    QTest::keyClick(&list_, Qt::Key_Return);
    EXPECT_EQ(path(), "D:\\docs");
    choose(2);
    QTest::keyClick(&list_, Qt::Key_Right);
    EXPECT_EQ(path(), "D:\\docs\\mail");
    QTest::keyClick(&list_, Qt::Key_Backspace);
    QTest::keyClick(&list_, Qt::Key_Left);
    EXPECT_EQ(path(), "D:\\");
    QTest::keyClick(&list_, Qt::Key_Backspace);
    EXPECT_EQ(path(), "D:\\");
    EXPECT_THAT(changes_, ElementsAre("D:\\", "D:\\docs", "D:\\docs\\mail", "D:\\docs", "D:\\"));
}

TEST_F(DirectoryListBoxTest, ADoubleClickOpensAndASingleOneDoesNot) {
    make("docs");
    setPath("D:");
    list_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&list_));
    const QPoint row = list_.visualRect(list_.model()->index(1, 0)).center();
    QTest::mouseClick(list_.viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(path(), "D:\\");
    QTest::mouseDClick(list_.viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(path(), "D:\\docs");
}

TEST_F(DirectoryListBoxTest, TypingTheStartOfANameFindsTheFolder) {
    make("docs");
    make("mail");
    setPath("D:");
    QTest::keyClicks(&list_, QStringLiteral("ma"));
    EXPECT_EQ(list_.currentIndex().data().toString(), QStringLiteral("mail"));
}

TEST_F(DirectoryListBoxTest, OpeningTheOpenFolderReadsItAgainAndTakesIt) {
    setPath("D:");
    make("new");
    list_.open(list_.model()->index(0, 0));
    EXPECT_THAT(rows(), ElementsAre("D:\\", "new"));
    EXPECT_THAT(changes_, ElementsAre("D:\\", "D:\\"));
}

TEST_F(DirectoryListBoxTest, ADriveThatIsNotReadyIsErrorSixtyEightAndNothingChanges) {
    setPath("D:");
    const DriveStandsFor a('A', drive_.qtPath("missing"));
    EXPECT_EQ(errorOfPath("A:"), errors::DeviceUnavailable);
    EXPECT_EQ(errorOfPath("Q:\\docs"), errors::DeviceUnavailable);
    EXPECT_EQ(path(), "D:\\");
    EXPECT_THAT(rows(), ElementsAre("D:\\"));
    EXPECT_THAT(changes_, ElementsAre("D:\\"));
}

TEST_F(DirectoryListBoxTest, WhatIsNoFolderIsErrorSeventyFiveAndNothingChanges) {
    drive_.write("file", "x");
    setPath("D:");
    using namespace std::string_view_literals;
    for (const std::string_view wrong :
         {R"(D:\missing)"sv, R"(D:\file)"sv, R"(D:\file\x)"sv, ""sv, "D:\\a\0b"sv}) {
        EXPECT_EQ(errorOfPath(wrong), errors::PathFileAccess) << wrong;
    }
    EXPECT_EQ(path(), "D:\\");
}

TEST_F(DirectoryListBoxTest, AFolderThatHasGoneMeanwhileIsErrorSeventyFive) {
    make("docs");
    setPath("D:");
    filesystem::remove(drive_.path("docs"));
    EXPECT_EQ(errorNumberOf([&] { list_.open(list_.model()->index(1, 0)); }), errors::PathFileAccess);
    EXPECT_EQ(path(), "D:\\");
}

TEST_F(DirectoryListBoxTest, AFolderThatMayNotBeReadIsErrorSeventyFive) {
    make("closed");
    ASSERT_EQ(::chmod(drive_.path("closed").c_str(), 0), 0);
    setPath("D:");
    EXPECT_THAT(rows(), ElementsAre("D:\\", "closed"));
    int error = 0;
    // Tests foldersIn() alone, since the list itself may only be used in the thread of the windows.
    ASSERT_TRUE(support::withoutPrivileges([&] {
        error = errorNumberOf([] {
            controls::foldersIn({QStringLiteral("D:"), {QStringLiteral("closed")}});
        });
    }));
    EXPECT_EQ(error, errors::PathFileAccess);
}

TEST_F(DirectoryListBoxTest, OnlyFoldersAreListedAndLinksToThem) {
    make("folder");
    drive_.write("file", "x");
    filesystem::create_directory_symlink(drive_.path("folder"), drive_.path("link"));
    filesystem::create_symlink(drive_.path("file"), drive_.path("link to file"));
    filesystem::create_symlink(drive_.path("nothing"), drive_.path("link to nothing"));
    filesystem::create_symlink(drive_.path("circle"), drive_.path("circle"));
    setPath("D:");
    EXPECT_THAT(rows(), ElementsAre("D:\\", "folder", "link"));
}

TEST_F(DirectoryListBoxTest, HiddenFoldersAreNotListedButMayBeOpenByTheirPath) {
    make(".secret/inside");
    setPath("D:");
    EXPECT_THAT(rows(), ElementsAre("D:\\"));
    setPath("D:\\.secret");
    EXPECT_THAT(rows(), ElementsAre("D:\\", ".secret", "inside"));
}

TEST_F(DirectoryListBoxTest, FoldersThatNoSettingsLineCanNameAreNotListed) {
    for (const char* name : {"a\\b", "line\nend", "carriage\rreturn", "no text \xFF", "C:\\"}) {
        make(name);
    }
    make("good");
    setPath("D:");
    EXPECT_THAT(rows(), ElementsAre("D:\\", "good"));
    // The temporary folder cannot remove a folder of this name itself.
    filesystem::remove(drive_.path("no text \xFF"));
}

TEST_F(DirectoryListBoxTest, NamesOfStrangersAreShownAndNotObeyed) {
    make("a\u202Eb");
    make("bell\x07");
    make("<img src=x>&amp;");
    make("  blanks ");
    setPath("D:");
    EXPECT_THAT(rows(), testing::UnorderedElementsAre("D:\\", "a<202E>b", "bell\u2407", "<img src=x>&amp;",
                                                      "  blanks "));
    for (int row = 1; row < list_.model()->rowCount(); ++row) {
        const QString tip = list_.model()->index(row, 0).data(Qt::ToolTipRole).toString();
        EXPECT_FALSE(tip.contains(QLatin1String("<img"))) << tip.toStdString();
        EXPECT_TRUE(Qt::mightBeRichText(tip)) << tip.toStdString();
    }
}

TEST_F(DirectoryListBoxTest, AFolderOfAStrangeNameOpensUnderItsOwnName) {
    make("a\u202Eb/inside");
    setPath("D:");
    list_.open(list_.model()->index(1, 0));
    EXPECT_EQ(path(), "D:\\a\u202Eb");
    EXPECT_THAT(rows(), ElementsAre("D:\\", "a<202E>b", "inside"));
}

TEST_F(DirectoryListBoxTest, NumbersInNamesAreInTheirOwnOrderAndCaseDoesNotCount) {
    for (const char* name : {"mail 10", "Mail 9", "apple", "Zoo", "\u00C4pfel"}) {
        make(name);
    }
    setPath("D:");
    const std::vector<std::string> names = rows();
    const auto at = [&names](const char* name) {
        return std::find(names.begin(), names.end(), name) - names.begin();
    };
    EXPECT_LT(at("apple"), at("Mail 9"));
    EXPECT_LT(at("Mail 9"), at("Zoo"));
    EXPECT_EQ(names.size(), 6U);
}

TEST_F(DirectoryListBoxTest, AFolderOfManyFoldersIsShownAtOnce) {
    constexpr int many = support::fewerIfSanitized(30'000, 6);
    for (int i = 0; i < many; ++i) {
        ::mkdir(drive_.path("folder " + std::to_string(i)).c_str(), 0700);
    }
    list_.show();
    QElapsedTimer clock;
    clock.start();
    setPath("D:");
    list_.grab();
    RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
    EXPECT_EQ(list_.model()->rowCount(), many + 1);
    EXPECT_LT(clock.elapsed(), 3000);
}

TEST_F(DirectoryListBoxTest, APathOfAHundredFoldersIsShown) {
    std::string deep = "D:";
    std::string folders;
    for (int i = 0; i < 100; ++i) {
        deep += "\\f" + std::to_string(i);
        folders += "f" + std::to_string(i) + "/";
    }
    make(folders);
    setPath(deep);
    EXPECT_EQ(list_.currentIndex().row(), 100);
    list_.show();
    EXPECT_FALSE(list_.grab().isNull());
}

} // namespace
