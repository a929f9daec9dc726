#include "data/regression.h"

#include <cmath>
#include <limits>

namespace {

/// The middle of the points, worked out from the first one so that equal numbers give exactly that number.
QPointF middle(const QVector<QPointF>& points)
{
    if (points.isEmpty())
        return {};
    QPointF sum;
    for (const QPointF& p : points)
        sum += p - points.constFirst();
    return points.constFirst() + sum / points.size();
}

} // namespace

LineFit fitLine(const QVector<QPointF>& points)
{
    const QPointF mean = middle(points);
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const QPointF& p : points) {
        const QPointF d = p - mean;
        xx += d.x() * d.x();
        xy += d.x() * d.y();
        yy += d.y() * d.y();
    }
    LineFit fit;
    fit.slope = xy / xx;
    fit.intercept = mean.y() - fit.slope * mean.x();
    fit.r = std::sqrt(xy * xy / (xx * yy));
    return fit;
}

// Power sums up to x⁴ of a run of hours leave few digits. So x is moved to its mean and scaled to -1..1, the
// curve is put together of polynomials that are orthogonal on the points, and only the result is turned back:
//   p1 = u,  p2 = u² - k u - m   with   u = (x - mean) / scale
ParabolaFit fitParabola(const QVector<QPointF>& points)
{
    const QPointF mean = middle(points);
    double scale = 0.0;
    for (const QPointF& p : points)
        scale = std::fmax(scale, std::fabs(p.x() - mean.x()));

    double u1 = 0.0;
    double u2 = 0.0;
    for (const QPointF& p : points) {
        const double u = (p.x() - mean.x()) / scale;
        u1 += u;
        u2 += u * u;
    }
    const double m1 = u1 / points.size();
    const double m = u2 / points.size();
    double cube = 0.0;
    double p1p1 = 0.0;
    double p1y = 0.0;
    for (const QPointF& p : points) {
        const double u = (p.x() - mean.x()) / scale - m1;
        cube += u * (u + m1) * (u + m1);
        p1p1 += u * u;
        p1y += u * (p.y() - mean.y());
    }
    const double k = cube / p1p1;
    double p2p2 = 0.0;
    double p2y = 0.0;
    for (const QPointF& p : points) {
        const double u = (p.x() - mean.x()) / scale;
        const double p2 = u * u - k * (u - m1) - m;
        p2p2 += p2 * p2;
        p2y += p2 * (p.y() - mean.y());
    }
    // Points at fewer than three places leave only rounding in p2.
    const double rounding = 64 * std::numeric_limits<double>::epsilon();
    const double c1 = p1y / p1p1;
    const double c2 =
        p2p2 > points.size() * rounding * rounding ? p2y / p2p2 : std::numeric_limits<double>::quiet_NaN();

    double yy = 0.0;
    double yf = 0.0;
    double ff = 0.0;
    for (const QPointF& p : points) {
        const double u = (p.x() - mean.x()) / scale;
        const double dy = p.y() - mean.y();
        const double f = c1 * (u - m1) + c2 * (u * u - k * (u - m1) - m);
        yy += dy * dy;
        yf += dy * f;
        ff += f * f;
    }
    const double bu = c1 - c2 * k;
    const double cu = mean.y() - bu * m1 - c2 * m;
    const double at = mean.x() / scale;
    ParabolaFit fit;
    fit.a = c2 / (scale * scale);
    fit.b = (bu - 2 * c2 * at) / scale;
    fit.c = cu - bu * at + c2 * at * at;
    fit.r = yf / (std::sqrt(yy) * std::sqrt(ff));
    return fit;
}

double fittedSlope(const QVector<QPointF>& points, double x)
{
    QVector<QPointF> moved = points;
    for (QPointF& p : moved)
        p.rx() -= x;
    const double slope = fitParabola(moved).b;
    return std::isfinite(slope) ? slope : fitLine(moved).slope;
}
