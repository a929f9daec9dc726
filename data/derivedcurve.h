#pragma once

#include <QVector>

/// What a moving average and a change per second make of a channel. A sample that is not a number is a gap:
/// it stays one and has no part in its neighbours.
class DerivedCurve
{
public:
    enum Kind
    {
        Smooth,
        Slope
    };

    /// `times` ascend about `period` apart, and may be fewer than the values; `kernel` is the width of the
    /// average in samples.
    DerivedCurve(Kind kind, const QVector<double>& times, double period, int kernel);

    /// Of sample `i` of `v`: the mean of the samples around it; or the change since the value before, however
    /// long ago that was, and of the first one to the next.
    double at(const QVector<double>& v, int i) const;
    QVector<double> of(const QVector<double>& v) const;
    /// Widens a stretch of changed samples by those that they have a part in.
    void widen(const QVector<double>& v, int* first, int* last) const;

private:
    double smoothedAt(const QVector<double>& v, int i) const;
    double slopeAt(const QVector<double>& v, int i) const;
    double timeBetween(int i, int k) const;

    const Kind kind;
    const QVector<double>& times;
    const double period;
    const int radius;
};
