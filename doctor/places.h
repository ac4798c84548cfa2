#pragma once

#include "doctor/report.h"
#include "email/settings.h"

#include <QString>

#include <vector>

namespace doctor {

// The folders and files around the program. Nothing is written, and no file is made.

/** Who may change the settings file, besides what the program itself refuses. `error` is that of its reading.
 */
std::vector<Finding> findingsOfRights(int error);

/** The drives, and whether the program could write where it will want to. */
std::vector<Finding> findingsOfFolders(const email::Settings& settings);

/**
 * Why no file could be written into a folder, in words; empty when one could. A folder that is not there
 * counts as the first one above it when `isMade`.
 */
QString whyNotWritable(const QString& nativeFolder, bool isMade = false);

} // namespace doctor
