#pragma once

#include "doctor/report.h"
#include "email/settings.h"

#include <vector>

namespace doctor {

/**
 * Logo, sound, printer, fonts and libraries, as the program will find them on this computer and in the
 * current folder. Needs a QGuiApplication, on any platform: one without a display has the same fonts.
 */
std::vector<Finding> findingsOfSurroundings(const email::Settings& settings);

} // namespace doctor
