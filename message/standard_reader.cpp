#include "message/standard_reader.h"

#include "platform/own_library.h"
#include "platform/runtime_error.h"

const StandardReader& standardReader() {
    using Give = const StandardReader* (*)();
    static const auto give =
        platform::functionIn<Give>("libbrindlewake_standard.so", "brindlewakeStandardReader");
    if (give == nullptr) {
        throw platform::RuntimeError(platform::errors::FileNotFound);
    }
    return *give();
}
