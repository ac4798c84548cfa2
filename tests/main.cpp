#include "tests/support/application.h"

#include <gmock/gmock.h>

int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    const int result = RUN_ALL_TESTS();
    support::endApplication();
    return result;
}
