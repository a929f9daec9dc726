#pragma once

#include <QPainterPath>
#include <QPolygonF>

namespace StrokePath {

/// What a pen of `width` covers along the line, to be filled by the winding rule: a quad for each segment, a
/// triangle at the outer side of each corner, half a width more at both ends. Without the angles that the
/// engine works out for each round join it takes a third of the time of a drawn polyline. Empty for a line
/// without length.
QPainterPath around(const QPolygonF& line, double width);

/// The line without the points that lie in one narrow column with their neighbours, but for the first, the
/// last, the lowest and the highest of each column: it looks the same, and its length follows its width.
QPolygonF thinned(const QPolygonF& line);

} // namespace StrokePath
