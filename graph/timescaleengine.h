#pragma once

#include <qwt_scale_engine.h>

class TimeScaleDraw;

/// Places the ticks of the bottom axis at round numbers of the unit that its scale draw shows: on a minute
/// axis at 1, 2, 5, 10, 15, 30 minutes and not at round seconds. Works for fixed and for automatic ranges.
class TimeScaleEngine : public QwtLinearScaleEngine
{
public:
    /// `draw` is the scale draw of the same axis. It is not owned and outlives the axis's last update.
    explicit TimeScaleEngine(const TimeScaleDraw* draw);

    void autoScale(int maxNumSteps, double& x1, double& x2, double& stepSize) const override;
    QwtScaleDiv divideScale(double x1, double x2, int maxMajorSteps, int maxMinorSteps,
                            double stepSize = 0.0) const override;

private:
    double unitLength() const;
    double roundStep(double width, int maxSteps) const;

    const TimeScaleDraw* draw;
};
