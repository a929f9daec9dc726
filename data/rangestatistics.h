#pragma once

#include "data/stretch.h"

class ExpData;

/// What can be said of the values of a stretch, in the units on display. Not finite where there is nothing to
/// say.
struct RangeStatistics
{
    int n = 0;
    double mean = 0;
    double deviation = 0; ///< of the values as they are, not of a sample of more
    double min = 0;
    double max = 0;
    double area = 0;  ///< under the curve, by trapezoids; over the time only
    double slope = 0; ///< of the line that is fitted to it
    QString unit;
    QString areaUnit;
    QString slopeUnit;

    /// `stretch` is one of `data`.
    static RangeStatistics of(const ExpData& data, const Stretch& stretch);
};
