#include "graph/timescaleengine.h"

#include "graph/timescaledraw.h"

#include <algorithm>

namespace {

// Steps in parts of the unit. The labels of a line graph have one decimal, so a tenth is the finest; those of
// a bar graph tell seconds (or minutes), so it goes by sixtieths.
constexpr double lineSteps[] = {0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60};
constexpr double lineHourSteps[] = {0.1, 0.2, 0.5, 1, 2, 3, 6, 12, 24, 48};
constexpr double barSteps[] = {1.0 / 60, 2.0 / 60, 5.0 / 60, 10.0 / 60, 15.0 / 60, 30.0 / 60,
                               1,        2,        5,        10,        15,        30};

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

template<size_t N> double roundStep(const double (&steps)[N], double width, int maxSteps)
{
    const double wanted = width / maxSteps * (1 - 1e-9);
    const double* step = std::lower_bound(std::begin(steps), std::end(steps), wanted);
    // Too wide or too close a look for this table: Qwt's own decimal steps.
    if (step == std::end(steps) || width < 2 * steps[0])
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
        return draw->isBarAxis() ? ::roundStep(barSteps, width, steps) : ::roundStep(lineSteps, width, steps);
    case UNIT_HOUR:
        return draw->isBarAxis() ? ::roundStep(barSteps, width, steps)
                                 : ::roundStep(lineHourSteps, width, steps);
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
