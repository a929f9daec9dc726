#pragma once

#include <QString>

#include "data/timeaxis.h"
#include "graph/sparsescaledraw.h"

/// Units of the time axis. MANUAL counts samples.
enum units
{
    UNIT_MANUAL,
    UNIT_MS,
    UNIT_SEC,
    UNIT_MIN,
    UNIT_HOUR
};

/// The bottom axis of a graph, and all texts of times. The x values of a line graph are in seconds (or sample
/// numbers) whatever the unit, only the labels change; those of a bar graph are in the unit.
class TimeScaleDraw : public SparseScaleDraw, public TimeAxis
{
public:
    explicit TimeScaleDraw(bool isBar);

    void setUnit(units u);
    /// Picks the unit for a range that ends at `x` seconds, sampled every `res` seconds; `res` 0 is manual
    /// sampling. From a longer unit it goes back only where less than one of it is shown. An axis with a
    /// fixed range must be given its range again to get ticks of the new unit.
    void setUnitByMaxX(double x, double res);
    units getUnit() const { return unit; }
    bool isBarAxis() const { return isBar; }

    double getdT() const override { return dt > 0 ? dt : 1; }
    /// The sampling step in the unit, 1 for manual sampling.
    double getFactor() const { return dt > 0 ? res / dt : 1; }
    QString getUnitName() const override;
    QString getDefaultUnitName() const override;
    /// What the difference of two times is called.
    QString getDeltaName() const;
    QString getTimeOrSample() const;
    QString getTimeString(double t) const override;
    /// The same where times `apart` seconds from each other are to be told apart: seconds in an hour, tenths
    /// (or finer) of a second in a minute.
    QString getTimeString(double t, double apart) const;

    QwtText label(double v) const override;

private:
    double secondsBetweenLabels() const;

    units unit = UNIT_SEC;
    double dt = 1;  ///< seconds per unit, 0 for sample numbers
    double res = 0; ///< sampling step in seconds, 0 for manual sampling
    const bool isBar;
    const bool isJunior;
};
