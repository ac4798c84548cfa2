#pragma once

#include <QString>

#include <optional>

namespace controls {

/** What is pasted or dropped at a time; more would let the window stand still, and is better attached. */
inline constexpr qsizetype kMostPastedCharacters = 4'000'000;
inline constexpr qsizetype kMostPastedLines = 60'000;

/**
 * A text from elsewhere as a text box can hold it; nothing when it is too much. A line of more than
 * kLongestShownLine characters is broken for showing (kShownBreak), behind a space where there is one: whole
 * it would take minutes to lay out.
 */
std::optional<QString> pastableText(const QString& text);

} // namespace controls
