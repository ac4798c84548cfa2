#include "components/netcodelib/write_behind.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

using netcodelib::WriteBehind;
using platform::RuntimeError;
namespace errors = platform::errors;

TEST(WriteBehind, WritesAllPiecesInTheirOrderOnAThreadOfItsOwn) {
    std::string written;
    std::string wanted;
    const std::thread::id here = std::this_thread::get_id();
    bool elsewhere = true;
    WriteBehind target([&](std::string_view bytes) {
        written += bytes;
        elsewhere = elsewhere && std::this_thread::get_id() != here;
    });
    for (int number = 0; number < 1000; ++number) {
        std::string piece = std::to_string(number) + ' ';
        wanted += piece;
        target.write(piece);
        EXPECT_TRUE(piece.empty());
    }
    target.finish();
    EXPECT_EQ(written, wanted);
    EXPECT_TRUE(elsewhere);
}

TEST(WriteBehind, NothingToWriteIsFinishedAtOnce) {
    int calls = 0;
    WriteBehind target([&](std::string_view) { ++calls; });
    target.finish();
    EXPECT_EQ(calls, 0);
}

TEST(WriteBehind, WhatWritingRaisesIsRaisedByALaterCall) {
    int calls = 0;
    WriteBehind target([&](std::string_view) {
        ++calls;
        throw RuntimeError(errors::DiskFull);
    });
    const int error = platform::errorNumberOf([&target] {
        for (int number = 0; number < 1000; ++number) {
            std::string piece = "bytes";
            target.write(piece);
        }
    });
    EXPECT_EQ(error, errors::DiskFull);
    EXPECT_EQ(calls, 1);
}

TEST(WriteBehind, WhatWritingTheLastPieceRaisesIsRaisedByTheFinish) {
    WriteBehind target([&](std::string_view) { throw RuntimeError(errors::DiskFull); });
    std::string piece = "bytes";
    target.write(piece);
    EXPECT_EQ(platform::errorNumberOf([&target] { target.finish(); }), errors::DiskFull);
}

TEST(WriteBehind, GivenUpItIsGoneAfterThePieceThatIsBeingWritten) {
    std::atomic<int> calls = 0;
    {
        WriteBehind target([&](std::string_view) { ++calls; });
        std::string piece = "bytes";
        target.write(piece);
    }
    const int atTheEnd = calls;
    EXPECT_LE(atTheEnd, 1);
}

} // namespace
