#include "platform/only_program.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace {

using platform::OnlyProgram;
using support::EnvironmentVariable;
using testing::ElementsAre;
using testing::IsEmpty;
using Start = OnlyProgram::Start;
namespace filesystem = std::filesystem;

class OnlyProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* const name : {"runtime", "work", "other"}) {
            filesystem::create_directory(folder.path(name));
        }
        filesystem::current_path(folder.path("work"));
    }

    void TearDown() override { filesystem::current_path(before_); }

    /** Starts a second program while the first one answers. */
    Start startAnswered(OnlyProgram& first, bool canShow, const OnlyProgram::Request& request = {}) {
        auto second = std::async(std::launch::async, [&] { return OnlyProgram().start(request); });
        pollfd waited{first.listener(), POLLIN, 0};
        EXPECT_EQ(::poll(&waited, 1, 10'000), 1);
        first.answer([&](const OnlyProgram::Request& asked) {
            requests.push_back(asked.screen + '|' + asked.token);
            return canShow;
        });
        return second.get();
    }

    static Start startUnanswered() { return OnlyProgram().start({}, std::chrono::milliseconds(50)); }

    support::TemporaryFolder folder;
    std::vector<std::string> requests;
    EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path("runtime").string()};
    EnvironmentVariable state{"XDG_STATE_HOME", folder.path("state").string()};

  private:
    filesystem::path before_ = filesystem::current_path();
};

TEST_F(OnlyProgramTest, ASecondStartAsksTheFirstOneToShowItsWindow) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    EXPECT_EQ(startAnswered(first, true, {"screen", "token"}), Start::Shown);
    EXPECT_EQ(startAnswered(first, false), Start::NotShown);
    EXPECT_THAT(requests, ElementsAre("screen|token", "|"));
    EXPECT_THAT(filesystem::is_empty(folder.path("work")), true) << "the folder may be closed to writing";
}

TEST_F(OnlyProgramTest, WhatAStartTellsCannotLookLikeAnythingElse) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    EXPECT_EQ(startAnswered(first, true, {"a\tb\nc", std::string(100'000, 't')}), Start::Shown);
    EXPECT_THAT(requests, ElementsAre("a b c|" + std::string(512, 't')));
}

TEST_F(OnlyProgramTest, AFirstOneThatDoesNotAnswerCannotShowItsWindow) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    EXPECT_EQ(startUnanswered(), Start::NotShown);
}

TEST_F(OnlyProgramTest, AFirstOneWithoutASocketCannotShowItsWindow) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    for (const auto& entry : filesystem::directory_iterator(folder.path("runtime/brindlewake"))) {
        if (entry.is_socket()) {
            filesystem::remove(entry);
        }
    }
    EXPECT_EQ(startUnanswered(), Start::NotShown);
}

TEST_F(OnlyProgramTest, TheSameFolderUnderAnotherNameIsTheSame) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    filesystem::create_directory_symlink(folder.path("work"), folder.path("link"));
    filesystem::current_path(folder.path("link"));
    EXPECT_EQ(startUnanswered(), Start::NotShown);
}

TEST_F(OnlyProgramTest, InAnotherFolderAnotherProgramWorks) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    filesystem::current_path(folder.path("other"));
    OnlyProgram second;
    EXPECT_EQ(second.start({}), Start::First);
    EXPECT_GE(second.listener(), 0);
}

TEST_F(OnlyProgramTest, WhenTheFirstOneHasEndedTheNextIsTheFirst) {
    for (int round = 0; round < 3; ++round) {
        OnlyProgram first;
        ASSERT_EQ(first.start({}), Start::First);
        // The socket that the last one has left does not hinder the next one from being asked.
        EXPECT_EQ(startAnswered(first, true), Start::Shown);
    }
}

TEST_F(OnlyProgramTest, OneThatEndsWhileItIsAskedMakesRoom) {
    auto first = std::make_unique<OnlyProgram>();
    ASSERT_EQ(first->start({}), Start::First);
    auto second = std::async(std::launch::async, [] { return OnlyProgram().start({}); });
    pollfd waited{first->listener(), POLLIN, 0};
    ASSERT_EQ(::poll(&waited, 1, 10'000), 1);
    first.reset();
    EXPECT_EQ(second.get(), Start::First);
}

TEST_F(OnlyProgramTest, ALongNameOfTheFolderForTheLockDoesNotMatter) {
    const std::string deep = (folder.path() / std::string(120, 'd')).string();
    filesystem::create_directory(deep);
    const EnvironmentVariable far("XDG_RUNTIME_DIR", deep);
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    EXPECT_EQ(startAnswered(first, true), Start::Shown);
}

TEST_F(OnlyProgramTest, WhereNothingTakesALockTheProgramStartsAllTheSame) {
    filesystem::remove(folder.path("runtime"));
    std::ofstream(folder.path("state")) << "no folder";
    OnlyProgram first;
    EXPECT_EQ(first.start({}), Start::First);
    OnlyProgram second;
    EXPECT_EQ(second.start({}), Start::First);
}

TEST_F(OnlyProgramTest, OneWhoConnectsAndSaysNothingIsLeftAlone) {
    OnlyProgram first;
    ASSERT_EQ(first.start({}), Start::First);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    for (const auto& entry : filesystem::directory_iterator(folder.path("runtime/brindlewake"))) {
        if (entry.is_socket()) {
            filesystem::current_path(entry.path().parent_path());
            entry.path().filename().string().copy(address.sun_path, sizeof address.sun_path - 1);
        }
    }
    const platform::FileDescriptor silent(::socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(::connect(silent.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    first.answer([this](const OnlyProgram::Request&) {
        requests.emplace_back("shown");
        return true;
    });
    EXPECT_THAT(requests, IsEmpty());
}

} // namespace
