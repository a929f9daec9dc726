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

    static constexpr int leastWindow = 5; ///< samples that a slope is fitted over
    static constexpr int mostWindow = 21;

    /// `times` ascend about `period` apart, and may be fewer than the values; `kernel` is the width of the
    /// average or, from leastWindow on, of the window that a slope is fitted over, in samples.
    DerivedCurve(Kind kind, const QVector<double>& times, double period, int kernel);

    /// Of sample `i` of `v`: the mean of the samples around it; or the slope of the line that fits them best;
    /// or, without a window, the change since the value before, however long ago that was, and of the first
    /// one to the next.
    double at(const QVector<double>& v, int i) const;
    /// At time `at` by the window around sample `i`; for slopes with a window.
    double fittedSlope(const QVector<double>& v, int i, double at) const;
    QVector<double> of(const QVector<double>& v) const;
    /// Widens a stretch of changed samples by those that they have a part in.
    void widen(const QVector<double>& v, int* first, int* last) const;

private:
    double smoothedAt(const QVector<double>& v, int i) const;
    double slopeAt(const QVector<double>& v, int i) const;
    double timeOf(int i) const;
    double timeBetween(int i, int k) const;

    const Kind kind;
    const QVector<double>& times;
    const double period;
    const int radius;
};
