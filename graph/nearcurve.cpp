#include "graph/nearcurve.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int coarsePlaces = 100;

double distance(const QPointF& p, const QPointF& q)
{
    return std::hypot(p.x() - q.x(), p.y() - q.y());
}

/// The part of the way from `a` to `b` at which it comes nearest to `p`.
double nearestPart(const QPointF& p, const QPointF& a, const QPointF& b)
{
    const QPointF way = b - a;
    const double length = QPointF::dotProduct(way, way);
    return length > 0 ? std::clamp(QPointF::dotProduct(p - a, way) / length, 0.0, 1.0) : 0.0;
}

} // namespace

std::optional<NearCurve::Hit> NearCurve::onFunction(const QPointF& pos, const Strip& strip, const Maps& maps,
                                                    const std::function<double(double)>& valueAt)
{
    const auto at = [&](double column) {
        const double x = maps.x.invTransform(column);
        return QPointF(x, valueAt(x));
    };
    std::optional<Hit> best;
    if (!(strip.from <= strip.to))
        return best;
    double left = strip.from;
    QPointF value = at(left);
    QPointF place(left, maps.y.transform(value.y()));
    do {
        const double right = std::min(std::floor(left) + 1, strip.to);
        const QPointF nextValue = at(right);
        const QPointF nextPlace(right, maps.y.transform(nextValue.y()));
        const double part = nearestPart(pos, place, nextPlace);
        const double dist = distance(pos, place + part * (nextPlace - place));
        if (std::isfinite(dist) && (!best || dist < best->dist))
            best = Hit{value + part * (nextValue - value), dist};
        left = right;
        value = nextValue;
        place = nextPlace;
    } while (left < strip.to);
    const double exact = best ? valueAt(best->value.x()) : 0;
    if (best && std::isfinite(exact))
        best->value.setY(exact);
    return best;
}

std::optional<NearCurve::Hit> NearCurve::onPath(const QPointF& pos, int n, const Maps& maps,
                                                const std::function<QPointF(int)>& pointAt)
{
    const auto pixelDistance = [&](const QPointF& value) {
        const double dist = distance(pos, QwtScaleMap::transform(maps.x, maps.y, value));
        return std::isnan(dist) ? std::numeric_limits<double>::infinity() : dist; // a gap is nowhere
    };
    const auto nearestOf = [&](int from, int to, int step) {
        int best = from;
        double least = pixelDistance(pointAt(from));
        for (int i = from + step; i <= to; i += step) {
            const double dist = pixelDistance(pointAt(i));
            if (dist < least) {
                best = i;
                least = dist;
            }
        }
        return best;
    };
    if (n <= 0)
        return std::nullopt;
    const int step = std::max(n / coarsePlaces, 1);
    const int rough = nearestOf(0, n - 1, step);
    const int nearest = nearestOf(std::max(rough - step, 0), std::min(rough + step, n - 1), 1);
    const QPointF first = pointAt(nearest);
    QPointF value = first;
    if (n > 1) {
        int neighbour = nearest == 0 ? 1 : nearest - 1;
        if (nearest > 0 && nearest < n - 1 &&
            pixelDistance(pointAt(nearest + 1)) < pixelDistance(pointAt(nearest - 1)))
            neighbour = nearest + 1;
        const QPointF second = pointAt(neighbour);
        const double d1 = pixelDistance(first);
        const double d2 = pixelDistance(second);
        if (d1 + d2 > 0 && std::isfinite(d2))
            value += d1 / (d1 + d2) * (second - first);
    }
    const double dist = pixelDistance(value);
    if (!std::isfinite(dist))
        return std::nullopt;
    return Hit{value, dist};
}
