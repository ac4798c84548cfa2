#pragma once

#include "doctor/report.h"
#include "email/settings.h"
#include "email/settings_file.h"

#include <optional>
#include <string>
#include <vector>

namespace doctor {

/** The settings file, as the program has read it. */
struct SettingsRead {
    /** The lines that the program has read, as they are. */
    std::vector<std::string> lines;
    /** Lines behind those, which the program does not read. */
    int linesBehind = 0;
    /** The number of the error that ended the reading; 0 for none. */
    int error = 0;
    email::Settings settings{};
    email::DerivedValues derived{};

    /** What stands in this line, which counts from 1, as the program takes it; nothing when it was not read.
     */
    std::optional<QString> value(int line) const;
};

/** Reads settings with the program's own reader. Raises nothing; see SettingsRead::error. */
SettingsRead readSettings(const email::NextLine& nextLine);

/** The same for the settings file of the current folder. */
SettingsRead readSettingsFile();

/** What the report tells of the settings: each key with its value and what follows from it. */
std::vector<SettingSeen> settingsSeen(const SettingsRead& read);

/** What is wrong with the settings by themselves, and what a person surely did not mean. */
std::vector<Finding> findingsOf(const SettingsRead& read);

} // namespace doctor
