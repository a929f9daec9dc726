#include "graph/strokepath.h"

#include <QPointF>

#include <algorithm>
#include <cmath>

namespace {

QPointF acrossTo(const QPointF& step, double length)
{
    return QPointF(-step.y(), step.x()) * (length / std::hypot(step.x(), step.y()));
}

double turn(const QPointF& a, const QPointF& b)
{
    return a.x() * b.y() - a.y() * b.x();
}

QPolygonF withoutRepeats(const QPolygonF& line)
{
    constexpr double near = 0.01; // pixels
    QPolygonF points;
    points.reserve(line.size());
    for (const QPointF& point : line) {
        if (points.isEmpty() || (point - points.last()).manhattanLength() > near)
            points.append(point);
    }
    return points;
}

} // namespace

QPainterPath StrokePath::around(const QPolygonF& line, double width)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    const QPolygonF points = withoutRepeats(line);
    const int last = points.size() - 1;
    path.reserve(8 * points.size());
    QPointF across;
    for (int i = 0; i < last; ++i) {
        const QPointF before = across;
        const QPointF step = points[i + 1] - points[i];
        across = acrossTo(step, width / 2);
        const QPointF along(across.y(), -across.x());
        const QPointF from = i == 0 ? points[i] - along : points[i];
        const QPointF to = i + 1 == last ? points[i + 1] + along : points[i + 1];
        path.addPolygon(QPolygonF({from + across, to + across, to - across, from - across}));
        path.closeSubpath();
        // All pieces run the same way round, so that none cancels another.
        const double corner = i == 0 ? 0 : turn(before, across);
        if (corner != 0) {
            const QPointF& p = points[i];
            path.addPolygon(corner < 0 ? QPolygonF({p, p + before, p + across})
                                       : QPolygonF({p, p - across, p - before}));
            path.closeSubpath();
        }
    }
    return path;
}

QPolygonF StrokePath::thinned(const QPolygonF& line)
{
    constexpr double column = 1; // pixels, less than a pen is wide
    QPolygonF points;
    for (int i = 0; i < line.size();) {
        const double place = std::floor(line[i].x() / column);
        int lowest = i;
        int highest = i;
        int last = i;
        for (int k = i + 1; k < line.size() && std::floor(line[k].x() / column) == place; ++k) {
            lowest = line[k].y() < line[lowest].y() ? k : lowest;
            highest = line[k].y() > line[highest].y() ? k : highest;
            last = k;
        }
        int before = -1;
        for (const int k : {i, std::min(lowest, highest), std::max(lowest, highest), last}) {
            if (k != before)
                points.append(line[k]);
            before = k;
        }
        i = last + 1;
    }
    return points;
}
