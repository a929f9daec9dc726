#include "graph/curveanalysis.h"

#include <QPointF>

#include <algorithm>
#include <cmath>

#include "data/expdata.h"
#include "graph/myplotmarker.h"

std::unique_ptr<myPlotMarker> CurveAnalysis::fit(const GraphParts& parts, int degree,
                                                 const myPlotMarker& first, const myPlotMarker& second)
{
    const int iSens = first.iSens;
    const ExpData& data = parts.data;
    QPointF from = first.value();
    QPointF to = second.value();
    if (first.iReg >= 0 || (!data.isXYPlot() && from.x() == to.x()))
        return nullptr;
    if (!data.isXYPlot() && from.x() > to.x())
        std::swap(from, to);
    auto line = std::make_unique<myPlotMarker>(iSens, &parts.scaler, MARKER_REGRESSION);
    double* const a = &line->a;
    double* const b = &line->b;
    double* const c = &line->c;
    double* const r = &line->r;
    if (data.isXYPlot())
        data.regressionXY(degree, iSens, from.x(), to.x(), from.y(), to.y(), a, b, c, r);
    else
        data.regression(degree, iSens, from.x(), to.x(), a, b, c, r);
    if (!std::isfinite(*a) || !std::isfinite(*b) || !std::isfinite(*c))
        return nullptr;
    line->linX0 = from.x();
    line->linX1 = to.x();
    const double middle = (from.x() + to.x()) / 2;
    line->setValue(middle, line->calcRegValue(middle));
    return line;
}

std::unique_ptr<myPlotMarker> CurveAnalysis::integral(const GraphParts& parts, const myPlotMarker& first,
                                                      const myPlotMarker& second)
{
    const double x0 = std::min(first.xValue(), second.xValue());
    const double x1 = std::max(first.xValue(), second.xValue());
    if (parts.data.isXYPlot() || x0 == x1)
        return nullptr;
    auto area = std::make_unique<myPlotMarker>(first.iSens, &parts.scaler, MARKER_INTEGRAL);
    area->linX0 = x0;
    area->linX1 = x1;
    area->integral = parts.data.integral(first.iSens, x0, x1);
    area->setValue((x0 + x1) / 2, first.yValue());
    return area;
}
