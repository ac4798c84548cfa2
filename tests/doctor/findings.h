#pragma once

#include "doctor/report.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace doctor {

/** Lets GoogleTest print findings. */
inline void PrintTo(const Finding& finding, std::ostream* stream) {
    *stream << "grade " << static_cast<int>(finding.grade) << " about " << finding.about.toStdString()
            << " line " << finding.line << " message " << finding.message << " number " << finding.number
            << ": " << finding.text.toStdString();
}

} // namespace doctor

namespace support {

/** The finding with this number; one without a text where there is none. */
inline doctor::Finding findingWith(int number, const std::vector<doctor::Finding>& findings) {
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [number](const auto& finding) { return finding.number == number; });
    return found == findings.end() ? doctor::Finding() : *found;
}

/** The first finding whose text holds these words; one without a text where there is none. */
inline doctor::Finding findingOf(const char* words, const std::vector<doctor::Finding>& findings) {
    const auto found = std::find_if(findings.begin(), findings.end(), [words](const auto& finding) {
        return finding.text.contains(QString::fromUtf8(words));
    });
    return found == findings.end() ? doctor::Finding() : *found;
}

} // namespace support
