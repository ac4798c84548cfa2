#include "platform/file_descriptor.h"
#include "platform/typed_password.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace {
using platform::FileDescriptor;
using platform::readSecretLine;

/** The reading end of a pipe that holds this text and nothing more. */
FileDescriptor inputOf(const std::string& text) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    const FileDescriptor writing(ends[1]);
    EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    return FileDescriptor(ends[0]);
}

TEST(TypedPassword, IsOneLineWithoutItsEnd) {
    for (const char* const text : {"secret\n", "secret\r\n", "secret", "secret\nmore\n"}) {
        EXPECT_EQ(readSecretLine(inputOf(text).number()), "secret") << text;
    }
    EXPECT_EQ(readSecretLine(inputOf(" two words \n").number()), " two words ");
}

TEST(TypedPassword, IsNothingWhenNoneHasCome) {
    EXPECT_FALSE(readSecretLine(inputOf("").number()));
    EXPECT_FALSE(readSecretLine(inputOf("\n").number()));
    EXPECT_FALSE(readSecretLine(inputOf(std::string(platform::kMaximumPasswordBytes + 1, 'x')).number()));
}

TEST(TypedPassword, TakesNothingOfWhatFollows) {
    const FileDescriptor input = inputOf("first\nsecond\n");
    EXPECT_EQ(readSecretLine(input.number()), "first");
    EXPECT_EQ(readSecretLine(input.number()), "second");
}

TEST(TypedPassword, IsNotShownByTheTerminalWhichIsLeftAsItWas) {
    const FileDescriptor person(::posix_openpt(O_RDWR | O_NOCTTY));
    ASSERT_TRUE(person.isOpen());
    ASSERT_EQ(::grantpt(person.number()), 0);
    ASSERT_EQ(::unlockpt(person.number()), 0);
    const FileDescriptor terminal(::open(::ptsname(person.number()), O_RDWR | O_NOCTTY));
    ASSERT_TRUE(terminal.isOpen());
    termios before{};
    ASSERT_EQ(::tcgetattr(terminal.number(), &before), 0);
    ASSERT_NE(before.c_lflag & ECHO, 0U);
    // What is typed before the question is thrown away, so the answer is typed while the question waits.
    const pid_t typist = ::fork();
    ASSERT_GE(typist, 0);
    if (typist == 0) {
        termios now = before;
        while ((now.c_lflag & ECHO) != 0U) {
            ::tcgetattr(terminal.number(), &now);
        }
        ::_exit(::write(person.number(), "secret\n", 7) == 7 ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    EXPECT_EQ(platform::askForPassword(terminal.number(), ""), "secret");
    termios after{};
    ASSERT_EQ(::tcgetattr(terminal.number(), &after), 0);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    std::array<char, 64> shown{};
    const ssize_t bytes = ::read(person.number(), shown.data(), shown.size());
    EXPECT_EQ(std::string(shown.data(), bytes > 0 ? static_cast<std::size_t>(bytes) : 0).find("secret"),
              std::string::npos);
}

TEST(TypedPassword, IsAskedForAtATerminalOnly) {
    EXPECT_FALSE(platform::askForPassword(inputOf("secret\n").number(), ""));
}
} // namespace
