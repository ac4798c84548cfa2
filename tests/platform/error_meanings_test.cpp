#include "platform/error_meanings.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

namespace errors = platform::errors;
using platform::meaningOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

TEST(ErrorMeanings, EveryKnownNumberHasAMeaningOfItsOwn) {
    std::set<std::string> meanings{meaningOf(-1)};
    const std::set<int> numbers = {
        errors::InvalidProcedureCall, errors::Overflow,           errors::OutOfMemory,
        errors::SubscriptOutOfRange,  errors::TypeMismatch,       errors::FileNotFound,
        errors::DeviceInputOutput,    errors::InputPastEndOfFile, errors::DiskFull,
        errors::DeviceUnavailable,    errors::PathFileAccess,     errors::MailServerBusy,
        errors::LogOnRefused,         errors::MailServerTrouble,  errors::NetworkUnreachable,
        errors::ConnectionRefused,    errors::HostNotFound,       errors::PrinterError,
        errors::InvalidPicture};
    for (const int number : numbers) {
        EXPECT_TRUE(meanings.insert(meaningOf(number)).second) << number;
    }
}

TEST(ErrorMeanings, EveryNumberOfSendingHasAMeaningOfItsOwn) {
    std::vector<std::string> meanings;
    for (const int number :
         {20401, 20402, 20403, 20404, 20405, 20411, 20412, 20413, 20414, 20415, 20416, 20421,
          20422, 20423, 20424, 20425, 20426, 20431, 20432, 20433, 20434, 20442, 20443, 20444}) {
        const std::string meaning = meaningOf(number);
        EXPECT_NE(meaning, meaningOf(-1)) << number;
        EXPECT_THAT(meanings, Not(Contains(meaning))) << number;
        EXPECT_THAT(meaning, HasSubstr(number >= 20440 ? "may have been sent" : "sent")) << number;
        meanings.push_back(meaning);
    }
}

} // namespace
