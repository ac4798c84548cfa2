#pragma once

#include <QPalette>

namespace controls {

/** How far two colours stand apart: from 1 to 21 (WCAG 2.1, contrast ratio). */
double contrast(const QColor& one, const QColor& other);

/** The colour in the middle between two. */
QColor halfway(const QColor& one, const QColor& other);

/**
 * Returns the palette with other colours for disabled controls: dimmed texts that can still be read, with a
 * contrast of at least 4.5 on every background. The texts of buttons stay as they are.
 */
QPalette legibleWhileResting(QPalette palette);

/** Returns the palette with the colours of enabled controls also for disabled ones. */
QPalette sameWhileResting(QPalette palette);

} // namespace controls
