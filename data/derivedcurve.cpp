#include "data/derivedcurve.h"

#include <cmath>

#include "data/novalue.h"
#include "data/regression.h"

namespace {

/// From `i` in steps to the next value that is no gap; -1 without one.
int nextValue(const QVector<double>& v, int i, int step)
{
    while (i >= 0 && i < v.size() && std::isnan(v.at(i)))
        i += step;
    return i < v.size() ? qMax(-1, i) : -1;
}

} // namespace

DerivedCurve::DerivedCurve(Kind kind, const QVector<double>& times, double period, int kernel)
    : kind(kind)
    , times(times)
    , period(period)
    , radius(kind == Slope && kernel < leastWindow ? 0 : qMax(0, (kernel - 1) / 2))
{
}

double DerivedCurve::at(const QVector<double>& v, int i) const
{
    if (std::isnan(v.at(i)))
        return noValue;
    if (kind == Slope)
        return radius > 0 ? fittedSlope(v, i, timeOf(i)) : slopeAt(v, i);
    return smoothedAt(v, i);
}

QVector<double> DerivedCurve::of(const QVector<double>& v) const
{
    QVector<double> result(v.size());
    for (int i = 0; i < v.size(); ++i)
        result[i] = at(v, i);
    return result;
}

void DerivedCurve::widen(const QVector<double>& v, int* first, int* last) const
{
    const int reach = kind == Slope ? qMax(1, radius) : radius;
    *first = qMax(0, *first - reach);
    *last = qMin(*last + reach, v.size() - 1);
    if (kind != Slope || radius > 0)
        return;
    // The neighbours of a slope are values, however long the gap between.
    const int before = nextValue(v, *first, -1);
    const int after = nextValue(v, *last, 1);
    *first = before >= 0 ? before : *first;
    *last = after >= 0 ? after : *last;
}

double DerivedCurve::smoothedAt(const QVector<double>& v, int i) const
{
    const int last = qMin(v.size() - 1, i + radius);
    double sum = 0.0;
    int count = 0;
    for (int k = qMax(0, i - radius); k <= last; ++k) {
        if (std::isnan(v.at(k)))
            continue;
        sum += v.at(k);
        ++count;
    }
    return sum / count;
}

double DerivedCurve::slopeAt(const QVector<double>& v, int i) const
{
    const int before = nextValue(v, i - 1, -1);
    const int from = before >= 0 ? before : i;
    const int to = before >= 0 ? i : nextValue(v, i + 1, 1);
    return to < 0 ? noValue : (v.at(to) - v.at(from)) / timeBetween(from, to);
}

/// The window is cut off at the ends of the channel, and slides inwards there so that it keeps
/// leastWindow samples.
double DerivedCurve::fittedSlope(const QVector<double>& v, int i, double at) const
{
    const int first = qMax(0, qMin(i - radius, v.size() - leastWindow));
    const int last = qMin(v.size() - 1, qMax(i + radius, leastWindow - 1));
    QVector<QPointF> points;
    for (int k = first; k <= last; ++k) {
        if (!std::isnan(v.at(k)))
            points.append({timeOf(k), v.at(k)});
    }
    return points.size() > 1 ? ::fittedSlope(points, at) : noValue;
}

double DerivedCurve::timeOf(int i) const
{
    return i < times.size() ? times.at(i)
                            : (times.isEmpty() ? 0.0 : times.last()) + (i - times.size() + 1) * period;
}

/// A whole number of samples, as near as the times tell it.
double DerivedCurve::timeBetween(int i, int k) const
{
    const double steps = k < times.size() ? std::round((times.at(k) - times.at(i)) / period) : k - i;
    return qMax(1.0, steps) * period;
}
