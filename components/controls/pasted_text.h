#pragma once

#include <QString>

#include <optional>

namespace controls {

/** The limits of what is pasted or dropped at a time. More would freeze the window, and is better attached.
 */
inline constexpr qsizetype kMostPastedCharacters = 4'000'000;
inline constexpr qsizetype kMostPastedLines = 60'000;

/**
 * Returns a pasted or dropped text as a text box can hold it; nothing when it is too long. A line of more
 * than kLongestShownLine characters is broken for showing (kShownBreak), after a space where there is one,
 * since Qt would take minutes to lay it out in one piece.
 */
std::optional<QString> pastableText(const QString& text);

} // namespace controls
