#pragma once

#include "message/standard_reader.h"

#include <string_view>

namespace standard {

/** What StandardReader::listed() returns. */
ListedFields listedFields(const ListedFields& fields);

/** What StandardReader::read() returns. */
StandardMessage readStandardMessage(std::string_view header, std::string_view body);

} // namespace standard
