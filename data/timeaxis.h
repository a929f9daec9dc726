#pragma once

#include <QString>

/// What a data set asks of the axis that shows it. The graph's time axis fulfils it.
class TimeAxis
{
public:
    virtual ~TimeAxis() = default;

    /// Seconds per shown unit, 1 for sample numbers.
    virtual double getdT() const = 0;
    virtual QString getUnitName() const = 0;
    virtual QString getDefaultUnitName() const = 0;
    /// The text of a time given in seconds (or of a sample number), in the shown unit.
    virtual QString getTimeString(double t) const = 0;
};
