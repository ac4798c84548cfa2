#include "mailserver/mailbox.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using mailserver::Mailbox;

/** A folder of its own for each test, gone afterwards. */
class MailboxFolderTest : public testing::Test {
  protected:
    void SetUp() override {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        folder = std::filesystem::path(testing::TempDir()) / (std::string("brindlewake-") + test->name());
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
    }

    void TearDown() override { std::filesystem::remove_all(folder); }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    std::filesystem::path folder;
    Mailbox mailbox;
};

TEST_F(MailboxFolderTest, MessagesComeInTheOrderOfTheirNamesAndOtherFilesAreLeftAlone) {
    write("2.eml", "Subject: two\n\n");
    write("1.eml", "Subject: one\r\n\r\n");
    write("0.txt", "Subject: no mail\n\n");
    mailbox.load(folder);
    ASSERT_EQ(mailbox.messages().size(), 2U);
    EXPECT_EQ(mailbox.messages()[0]->text, "Subject: one\r\n\r\n");
    EXPECT_EQ(mailbox.messages()[1]->text, "Subject: two\r\n\r\n");
}

TEST_F(MailboxFolderTest, AMissingFolderIsAnError) {
    EXPECT_THROW(mailbox.load(folder / "missing"), std::runtime_error);
}

TEST(Mailbox, ANameIsNeverGivenTwice) {
    Mailbox mailbox;
    EXPECT_TRUE(mailbox.append("Subject: one\n\n"));
    mailbox.remove("message-1");
    mailbox.remove("message-1");
    EXPECT_TRUE(mailbox.append("Subject: two\n\n"));
    ASSERT_EQ(mailbox.messages().size(), 1U);
    EXPECT_EQ(mailbox.messages().front()->uniqueId, "message-2");
}

TEST(Mailbox, AStoredMessageStaysAsItIs) {
    Mailbox mailbox;
    mailbox.store("Subject: one\n\nno end");
    EXPECT_EQ(mailbox.messages().at(0)->text, "Subject: one\n\nno end");
}

TEST(Mailbox, AMessageThatIsTooLargeIsNotTaken) {
    Mailbox mailbox;
    EXPECT_FALSE(mailbox.append(std::string(Mailbox::kMaximumMessageBytes + 1, 'x')));
    EXPECT_TRUE(mailbox.messages().empty());
}

TEST(Mailbox, AFullMailboxTakesMailAgainAfterADeletion) {
    Mailbox mailbox;
    const std::string large(Mailbox::kMaximumMessageBytes - 2, 'x');
    while (mailbox.messages().size() < Mailbox::kMaximumBytes / Mailbox::kMaximumMessageBytes) {
        ASSERT_TRUE(mailbox.append(large));
    }
    EXPECT_FALSE(mailbox.append(large));
    mailbox.remove("message-1");
    EXPECT_TRUE(mailbox.append(large));
}

} // namespace
