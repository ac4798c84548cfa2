#include "components/controls/resting_palette.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace controls {

namespace {
/** Above 4.5, the least that can be read well, because smoothing brings letters closer to the background. */
constexpr double kEnough = 5.5;

double relativeLuminance(const QColor& colour) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/** Returns the colour at this share (0 to 1) of the way from the first colour to the second. */
QColor between(const QColor& from, const QColor& to, double share) {
    const auto part = [share](int first, int second) {
        return static_cast<int>(std::lround(first + (second - first) * share));
    };
    return {part(from.red(), to.red()), part(from.green(), to.green()), part(from.blue(), to.blue())};
}

double leastContrast(const QColor& text, std::initializer_list<QColor> grounds) {
    double least = 21;
    for (const QColor& ground : grounds) {
        least = std::min(least, contrast(text, ground));
    }
    return least;
}

/** Returns the first legible colour from the dim one to the strong one; if none is, black or white. */
QColor legible(const QColor& dim, const QColor& strong, std::initializer_list<QColor> grounds) {
    constexpr int steps = 20;
    for (int step = 0; step <= steps; ++step) {
        const QColor colour = between(dim, strong, static_cast<double>(step) / steps);
        if (leastContrast(colour, grounds) >= kEnough) {
            return colour;
        }
    }
    const bool black = leastContrast(Qt::black, grounds) > leastContrast(Qt::white, grounds);
    return black ? Qt::black : Qt::white;
}
} // namespace

double contrast(const QColor& one, const QColor& other) {
    constexpr double flare = 0.05;
    const double first = relativeLuminance(one) + flare;
    const double second = relativeLuminance(other) + flare;
    return std::max(first, second) / std::min(first, second);
}

QColor halfway(const QColor& one, const QColor& other) {
    return between(one, other, 0.5);
}

QPalette legibleWhileResting(QPalette palette) {
    const auto dim = [&palette](QPalette::ColorRole role) { return palette.color(QPalette::Disabled, role); };
    const auto makeLegible = [&](QPalette::ColorRole text, std::initializer_list<QColor> grounds) {
        palette.setColor(QPalette::Disabled, text,
                         legible(dim(text), palette.color(QPalette::Active, text), grounds));
    };
    makeLegible(QPalette::WindowText, {dim(QPalette::Window)});
    makeLegible(QPalette::Text, {dim(QPalette::Base), dim(QPalette::AlternateBase), dim(QPalette::Window)});
    makeLegible(QPalette::HighlightedText, {dim(QPalette::Highlight)});
    return palette;
}

QPalette sameWhileResting(QPalette palette) {
    // Many themes give a highlighted row too little contrast, so its background is made legible, too.
    palette.setColor(QPalette::Highlight,
                     legible(palette.color(QPalette::Active, QPalette::Highlight), Qt::black,
                             {palette.color(QPalette::Active, QPalette::HighlightedText)}));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText,
          QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button, QPalette::Highlight}) {
        palette.setColor(QPalette::Disabled, role, palette.color(QPalette::Active, role));
    }
    return palette;
}

} // namespace controls
