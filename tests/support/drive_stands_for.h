#pragma once

#include "tests/support/environment.h"

#include <QString>

namespace support {

/** Lets a drive's letter stand for a folder for as long as it lives. */
class DriveStandsFor {
  public:
    DriveStandsFor(char letter, const QString& folder)
        : variable_(std::string("BRINDLEWAKE_DRIVE_") + letter, folder.toStdString()) {}

  private:
    EnvironmentVariable variable_;
};

} // namespace support
