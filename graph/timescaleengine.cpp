#include "graph/timescaleengine.h"

#include "graph/timescaledraw.h"

#include <algorithm>

namespace {

// Seconds, as clocks are divided.
constexpr double clockSteps[] = {0.1, 0.2, 0.5, 1,    2,    5,    10,    15,    30,    60,    120,
                                 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 172800};

QwtScaleDiv scaled(const QwtScaleDiv& div, double factor)
{
    QList<double> ticks[QwtScaleDiv::NTickTypes];
    for (int type = 0; type < QwtScaleDiv::NTickTypes; ++type) {
        ticks[type] = div.ticks(type);
        for (double& tick : ticks[type])
            tick *= factor;
    }
    return QwtScaleDiv(div.lowerBound() * factor, div.upperBound() * factor, ticks);
}

double clockStep(double width, int maxSteps)
{
    const double wanted = width / maxSteps * (1 - 1e-9);
    const double* step = std::lower_bound(std::begin(clockSteps), std::end(clockSteps), wanted);
    // Too wide or too close a look for this table: Qwt's own decimal steps.
    if (step == std::end(clockSteps) || width < 2 * clockSteps[0])
        return QwtScaleArithmetic::divideInterval(width, maxSteps, 10);
    return *step;
}

} // namespace

TimeScaleEngine::TimeScaleEngine(const TimeScaleDraw* draw)
    : draw(draw)
{
}

double TimeScaleEngine::unitLength() const
{
    return draw->isBarAxis() ? 1 : draw->getdT();
}

double TimeScaleEngine::roundStep(double width, int maxSteps) const
{
    const int steps = std::max(maxSteps, 1);
    switch (draw->getUnit()) {
    case UNIT_MIN:
    case UNIT_HOUR:
        return clockStep(width * draw->getdT(), steps) / draw->getdT();
    case UNIT_MANUAL: // there is no half a sample
        return std::max(QwtScaleArithmetic::divideInterval(width, steps, 10), width < 2 ? 0.0 : 1.0);
    case UNIT_MS:
    case UNIT_SEC:
        return QwtScaleArithmetic::divideInterval(width, steps, 10);
    }
    return 0;
}

void TimeScaleEngine::autoScale(int maxNumSteps, double& x1, double& x2, double& stepSize) const
{
    const double unit = unitLength();
    QwtInterval shown = QwtInterval(x1 / unit, x2 / unit).normalized();
    if (shown.width() == 0)
        shown = buildInterval(shown.minValue());
    const double step = roundStep(shown.width(), maxNumSteps);
    if (!testAttribute(QwtScaleEngine::Floating))
        shown = align(shown, step);
    x1 = shown.minValue() * unit;
    x2 = shown.maxValue() * unit;
    stepSize = step * unit;
}

QwtScaleDiv TimeScaleEngine::divideScale(double x1, double x2, int maxMajorSteps, int maxMinorSteps,
                                         double stepSize) const
{
    const double unit = unitLength();
    const double step = stepSize != 0 ? stepSize / unit : roundStep(std::abs(x2 - x1) / unit, maxMajorSteps);
    return scaled(QwtLinearScaleEngine::divideScale(x1 / unit, x2 / unit, maxMajorSteps, maxMinorSteps, step),
                  unit);
}
