#pragma once

#include "components/netcodelib/base64_encoder.h"

#include <string>
#include <string_view>

namespace support {

/** The bytes as they stand in mail: lines of 76 letters, each with its line end. */
inline std::string base64Text(std::string_view bytes) {
    netcodelib::Base64Encoder encoder;
    std::string text;
    encoder.append(bytes, text);
    encoder.finish(text);
    return text;
}

} // namespace support
