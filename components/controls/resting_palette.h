#pragma once

#include <QPalette>

namespace controls {

/** How far two colours stand apart: from 1 to 21 (WCAG 2.1, contrast ratio). */
double contrast(const QColor& one, const QColor& other);

/** The colour in the middle between two. */
QColor halfway(const QColor& one, const QColor& other);

/**
 * The palette with another set of colours for what is disabled: dimmed texts that can still be read, with a
 * contrast of at least 4.5 on every ground that they stand on. The texts of buttons stay as they are.
 */
QPalette legibleWhileResting(QPalette palette);

/** The palette with the colours of what is enabled also for what is disabled. */
QPalette sameWhileResting(QPalette palette);

} // namespace controls
