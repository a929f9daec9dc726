#pragma once

#include <QColor>

/// How well colours can be told apart: the one place that works it out.
namespace Contrast {

/// What curves and texts have at least to their ground, or to the casing around them (WCAG 2.1, 1.4.11).
constexpr double least = 3;
/// Colours nearer than this, as distance() tells it, can be taken for one another.
constexpr double leastDistance = 0.1;

/// From 1 for equal colours to 21 for black on white, by WCAG 2.1.
double between(const QColor& a, const QColor& b);
/// White is easier to read on it than black.
bool isDark(const QColor& ground);
/// Nearly black or nearly white, what is easier to read; never below `least`.
QColor inkOn(const QColor& ground);
/// What goes around a curve so that it stands out from the ground; invalid for one that does by itself.
QColor casingFor(const QColor& color, const QColor& ground);
/// As far apart as they look: in Oklab (B. Ottosson, 2020), where black and white are 1 apart.
double distance(const QColor& a, const QColor& b);

} // namespace Contrast
